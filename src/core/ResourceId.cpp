#include <vexa/ResourceId.h>

#include <utility>

namespace vexa {

const ResourceId ResourceId::INVALID{};

ResourceId::ResourceId(std::string name_, std::string type_) : name(std::move(name_)), type(std::move(type_))
{
}

ResourceId::ResourceId(const std::string& text)
{
    const auto colon = text.find(':');
    type = text.substr(0, colon);
    // Without a colon npos + 1 wraps to 0: the name is then the whole text as well.
    name = text.substr(colon + 1);
}

ResourceId::ResourceId(ResourceId&& other) noexcept : name(std::move(other.name)), type(std::move(other.type))
{
    other.name.clear();
    other.type.clear();
}

ResourceId& ResourceId::operator=(ResourceId&& other) noexcept
{
    if (this != &other) {
        name = std::move(other.name);
        type = std::move(other.type);
        other.name.clear();
        other.type.clear();
    }
    return *this;
}

std::string ResourceId::ToString() const
{
    return type + ":" + name;
}

bool ResourceId::IsValid() const
{
    return !type.empty() && !name.empty();
}

void ResourceId::Invalidate()
{
    type.clear();
    name.clear();
}

std::string ResourceId::GetNameWithoutPath() const
{
    const auto slash = name.find_last_of('/');
    return slash == std::string::npos ? name : name.substr(slash + 1);
}

std::string ResourceId::GetNamePath() const
{
    const auto slash = name.find_last_of('/');
    return slash == std::string::npos ? std::string() : name.substr(0, slash);
}

bool ResourceId::operator==(const ResourceId& other) const
{
    return name == other.name && type == other.type;
}

bool ResourceId::operator!=(const ResourceId& other) const
{
    return !(*this == other);
}

bool ResourceId::operator<(const ResourceId& other) const
{
    // std::string compares through char_traits<char>, which compares as unsigned char.
    if (type != other.type)
        return type < other.type;
    return name < other.name;
}

} // namespace vexa
