#include <vexa/draw/Material.h>
#include <vexa/draw/Style.h>

#include <runa/BinaryStream.h>

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

using namespace vexa::draw;

namespace {

Material MakeEditedMaterial()
{
    Material material;
    material.color = {0.1f, 0.2f, 0.3f};
    material.specular = 0.9f;
    material.shininess = 200.0f;
    material.metallic = true;
    material.useLighting = false;
    return material;
}

} // namespace

TEST(MaterialTest, StreamLayoutAndRoundTrip)
{
    const Material written = MakeEditedMaterial();
    std::stringstream stream;
    written.WriteToStream(stream);
    const std::string bytes = stream.str();
    // Version word, five floats, two one-byte flags.
    ASSERT_EQ(bytes.size(), 4u + 5u * 4u + 2u);

    runa::BinaryReader reader(stream);
    std::uint32_t version = 0;
    float r = 0, g = 0, b = 0, specular = 0, shininess = 0;
    bool metallic = false, lighting = true;
    ASSERT_TRUE(reader.Read(version) && reader.Read(r) && reader.Read(g) && reader.Read(b) &&
                reader.Read(specular) && reader.Read(shininess) && reader.Read(metallic) && reader.Read(lighting));
    EXPECT_EQ(version, 1u);
    EXPECT_EQ(r, 0.1f);
    EXPECT_EQ(b, 0.3f);
    EXPECT_EQ(shininess, 200.0f);
    EXPECT_TRUE(metallic);
    EXPECT_FALSE(lighting);

    std::istringstream in(bytes);
    Material read;
    ASSERT_TRUE(read.ReadFromStream(in));
    EXPECT_EQ(read, written);
}

TEST(MaterialTest, DamagedRecordsKeepTheCurrentValues)
{
    std::stringstream stream;
    MakeEditedMaterial().WriteToStream(stream);
    const std::string bytes = stream.str();

    testing_support::LogCapture log;
    // Cut inside the last field: every earlier field would have been readable.
    std::istringstream truncated(bytes.substr(0, bytes.size() - 1));
    Material material;
    EXPECT_FALSE(material.ReadFromStream(truncated));
    EXPECT_EQ(material, Material{});

    std::string wrongVersion = bytes;
    wrongVersion[0] = 2;
    std::istringstream versioned(wrongVersion);
    EXPECT_FALSE(material.ReadFromStream(versioned));
    EXPECT_EQ(material, Material{});
    EXPECT_EQ(log.messages.size(), 2u) << "each refusal is reported";
}

TEST(StyleTest, BaseBlockHoldsVisibilityAndColourButNotTheTransform)
{
    Style written;
    written.visible = false;
    written.color = {0.25f, 0.5f, 0.75f};
    written.transform.SetPosition({1.0f, 2.0f, 3.0f});
    std::stringstream stream;
    written.WriteToStream(stream);
    ASSERT_EQ(stream.str().size(), 4u + 1u + 3u * 4u);

    Style read;
    read.transform.SetPosition({7.0f, 8.0f, 9.0f});
    ASSERT_TRUE(read.ReadFromStream(stream));
    EXPECT_FALSE(read.visible);
    EXPECT_EQ(read.color, written.color);
    // The owner places the instance; a stored transform must not override it.
    EXPECT_EQ(read.transform.GetPosition(), glm::vec3(7.0f, 8.0f, 9.0f));

    testing_support::LogCapture log;
    const std::string bytes = [&] {
        std::stringstream again;
        written.WriteToStream(again);
        return again.str();
    }();
    Style untouched;
    std::istringstream truncated(bytes.substr(0, bytes.size() - 2));
    EXPECT_FALSE(untouched.ReadFromStream(truncated));
    EXPECT_TRUE(untouched.visible);
    EXPECT_EQ(untouched.color, tesk::Color3f(1.0f, 1.0f, 1.0f));

    std::string wrongVersion = bytes;
    wrongVersion[0] = 0;
    std::istringstream versioned(wrongVersion);
    EXPECT_FALSE(untouched.ReadFromStream(versioned));
    EXPECT_TRUE(untouched.visible);
    EXPECT_FALSE(log.messages.empty());
}
