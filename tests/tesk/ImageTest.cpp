#include "../common/LogCapture.h"
#include "TempFolder.h"

#include <tesk/Image.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

using tesk::Image;
using tesk::PixelFormat;

using TempDir = testing_support::TempFolder;

TEST(Image, PngRoundTripKeepsEveryChannelCount)
{
    TempDir dir;
    for (int channels = 1; channels <= 4; ++channels) {
        // 3 x 2 so that a transposed or flipped image cannot pass.
        std::vector<std::uint8_t> pixels(3 * 2 * channels);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<std::uint8_t>(i * 37 + channels);
        const Image original(3, 2, channels, pixels);
        const std::string file = dir.PathOf("rt" + std::to_string(channels) + ".png");
        ASSERT_TRUE(original.SavePng(file));

        Image loaded;
        ASSERT_TRUE(loaded.LoadPng(file)) << channels << " channels";
        EXPECT_EQ(loaded.GetWidth(), 3u);
        EXPECT_EQ(loaded.GetHeight(), 2u);
        EXPECT_EQ(loaded.GetChannels(), channels);
        EXPECT_EQ(loaded.GetFormat(), PixelFormat::UInt8);
        EXPECT_EQ(std::vector<std::uint8_t>(loaded.GetUInt8Data().begin(), loaded.GetUInt8Data().end()),
                  pixels)
            << channels << " channels";
    }

    // Floats are clamped to 0..1 and rounded on the way to bytes.
    const Image floats(2, 1, 1, std::vector<float>{-0.5f, 0.5f});
    ASSERT_TRUE(floats.SavePng(dir.PathOf("f.png")));
    const Image back = Image::FromPng(dir.PathOf("f.png"));
    EXPECT_FLOAT_EQ(back.At(0, 0, 0), 0.0f);
    EXPECT_FLOAT_EQ(back.At(1, 0, 0), 128.0f / 255.0f);
}

TEST(Image, UnreadableFilesAreLoggedAndChangeNothing)
{
    TempDir dir;
    Image image(1, 1, 3, std::vector<std::uint8_t>{1, 2, 3});
    testing_support::LogCapture log;

    const std::string missing = dir.PathOf("missing.png");
    EXPECT_FALSE(image.LoadPng(missing));
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].label, "tesk::Image::LoadPng");
    EXPECT_NE(log.messages[0].message.find(missing), std::string::npos);
    EXPECT_EQ(image.GetWidth(), 1u);
    EXPECT_EQ(image.At(0, 0, 2), 3.0f / 255.0f);

    const std::string garbage = dir.PathOf("garbage.png");
    std::ofstream(garbage) << "not an image";
    EXPECT_TRUE(Image::FromPng(garbage).IsEmpty());
    EXPECT_EQ(log.messages.size(), 2u);

    EXPECT_FALSE(image.SavePng(dir.PathOf("no/such/dir/out.png")));
    EXPECT_EQ(log.messages.size(), 3u);

    // The general loader names the file and its own function, and reads what LoadPng reads.
    EXPECT_TRUE(Image::FromFile(garbage).IsEmpty());
    ASSERT_EQ(log.messages.size(), 4u);
    EXPECT_EQ(log.messages[3].label, "tesk::Image::Load");
    EXPECT_NE(log.messages[3].message.find(garbage), std::string::npos);
    ASSERT_TRUE(image.SavePng(dir.PathOf("kept.png")));
    EXPECT_EQ(Image::FromFile(dir.PathOf("kept.png")), image);
}

TEST(Image, ZeroSizeImagesAreEmptyButSafeAndBuffersMustMatchTheirShape)
{
    TempDir dir;
    testing_support::LogCapture log;
    Image image;
    ASSERT_TRUE(image.Create(0, 5, 3, PixelFormat::Float32));
    EXPECT_TRUE(image.IsEmpty());
    EXPECT_EQ(image.SizeInBytes(), 0u);
    EXPECT_TRUE(image.GetFloatData().empty());
    EXPECT_TRUE(log.messages.empty());

    EXPECT_EQ(image.At(0, 0, 0), 0.0f);
    EXPECT_FALSE(image.SavePng(dir.PathOf("empty.png")));
    EXPECT_TRUE(image.ToUInt8().IsEmpty());
    EXPECT_TRUE(Image(0, 0, 4, std::vector<std::uint8_t>{}).IsEmpty());
    EXPECT_EQ(log.messages.size(), 2u);

    // Host buffers must match their shape.
    const Image tooShort(2, 2, 3, std::vector<std::uint8_t>(11));
    EXPECT_TRUE(tooShort.IsEmpty());
    EXPECT_TRUE(log.Contains("A 2 x 2 x 3 image needs 12 values but 11 were given", "tesk::Image::Image"));

    EXPECT_FALSE(image.Create(4, 4, 5, PixelFormat::UInt8));
    EXPECT_FALSE(image.Create(0xFFFFFFFFu, 0xFFFFFFFFu, 4, PixelFormat::Float32));
    EXPECT_TRUE(image.IsEmpty());

    // Moving a buffer in keeps it; the pixels are read row by row from the top.
    std::vector<float> values = {0, 1, 2, 3, 4, 5};
    const float* data = values.data();
    ASSERT_TRUE(image.SetPixels(3, 2, 1, std::move(values)));
    EXPECT_EQ(image.GetFloatData().data(), data);
    EXPECT_EQ(image.At(2, 0, 0), 2.0f);
    EXPECT_EQ(image.At(0, 1, 0), 3.0f);
    EXPECT_TRUE(image.GetUInt8Data().empty());

    EXPECT_FALSE(image.SetPixels(3, 3, 1, std::vector<float>(6)));
    EXPECT_EQ(image.GetHeight(), 2u); // unchanged
}
