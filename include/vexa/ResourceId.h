#pragma once
// The identity of a resource: its type (the resource class's own name) and the name the
// host gave it, which may be a "/"-separated path. Text form: "type:name".

#include <vexa/Export.h>

#include <string>

namespace vexa {

struct VEXA_API ResourceId {
    std::string name;
    std::string type;

    /// Both fields empty.
    static const ResourceId INVALID;

    ResourceId() = default;
    ResourceId(std::string name, std::string type);
    /// Parses the text form: the type is everything before the first ':' and the name
    /// everything after it. Text without a ':' gives both fields the whole text, so a bare
    /// name is a valid identifier whose type equals its name.
    explicit ResourceId(const std::string& text);

    ResourceId(const ResourceId&) = default;
    ResourceId& operator=(const ResourceId&) = default;
    ResourceId(ResourceId&& other) noexcept;
    ResourceId& operator=(ResourceId&& other) noexcept;
    ~ResourceId() = default;

    /// type + ":" + name.
    std::string ToString() const;
    /// Both fields non-empty.
    bool IsValid() const;
    void Invalidate();

    /// The part of the name after its last '/', or the whole name.
    std::string GetNameWithoutPath() const;
    /// The part of the name before its last '/', or "" when it has none.
    std::string GetNamePath() const;

    bool operator==(const ResourceId& other) const;
    bool operator!=(const ResourceId& other) const;
    /// By type first, then by name, bytewise.
    bool operator<(const ResourceId& other) const;
};

} // namespace vexa
