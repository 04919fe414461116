#include <runa/BinaryStream.h>
#include <runa/IntrinsicParams.h>

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <vector>

using runa::IntrinsicParams;

namespace {

IntrinsicParams Camera()
{
    IntrinsicParams params;
    params.fx = 500.0f;
    params.fy = 400.0f;
    params.cx = 320.0f;
    params.cy = 240.0f;
    return params;
}

IntrinsicParams DistortedCamera()
{
    IntrinsicParams params = Camera();
    params.skew = 1.5f;
    params.k1 = 0.1f;
    params.k2 = -0.02f;
    params.k3 = 0.003f;
    params.p1 = 0.001f;
    params.p2 = -0.002f;
    return params;
}

} // namespace

TEST(IntrinsicParams, ProjectsThroughTheCameraMatrix)
{
    IntrinsicParams params = Camera();
    EXPECT_FALSE(params.HasDistortion());
    const glm::vec2 pixel = params.Project({0.2f, -0.1f, 2.0f});
    EXPECT_FLOAT_EQ(pixel.x, 370.0f);
    EXPECT_FLOAT_EQ(pixel.y, 220.0f);

    params.skew = 2.0f;
    const glm::mat3 k = params.GetCameraMatrix();
    // Rows (fx, skew, cx), (0, fy, cy), (0, 0, 1); GLM takes columns.
    EXPECT_EQ(k, glm::mat3(500, 0, 0, 2, 400, 0, 320, 240, 1));
    const glm::vec3 homogeneous = k * glm::vec3(0.1f, -0.05f, 1.0f);
    const glm::vec2 skewed = params.Project({0.2f, -0.1f, 2.0f});
    EXPECT_FLOAT_EQ(skewed.x, homogeneous.x);
    EXPECT_FLOAT_EQ(skewed.y, homogeneous.y);

    for (const float z : {0.0f, -1.0f}) {
        const glm::vec2 behind = params.Project({0.2f, 0.1f, z});
        EXPECT_TRUE(std::isnan(behind.x) && std::isnan(behind.y));
    }
}

TEST(IntrinsicParams, Distortion)
{
    IntrinsicParams params = Camera();
    // Without coefficients distortion is the identity.
    EXPECT_EQ(params.Distort({0.3f, -0.7f}), glm::vec2(0.3f, -0.7f));

    params.k1 = 0.1f;
    EXPECT_TRUE(params.HasDistortion());
    EXPECT_FLOAT_EQ(params.Distort({0.5f, 0.0f}).x, 0.5f * 1.025f);
    params.k1 = 0.0f;
    params.k3 = 1.0f; // r^6 = 1/64 at r = 0.5
    EXPECT_FLOAT_EQ(params.Distort({0.0f, 0.5f}).y, 0.5f * (1.0f + 1.0f / 64.0f));

    IntrinsicParams tangential = Camera();
    tangential.p1 = 0.01f;
    tangential.p2 = 0.02f;
    // x' = x + 2 p1 x y + p2 (r2 + 2 x^2), y' = y + p1 (r2 + 2 y^2) + 2 p2 x y; r2 = 0.5.
    const glm::vec2 shifted = tangential.Distort({0.5f, 0.5f});
    EXPECT_FLOAT_EQ(shifted.x, 0.5f + 0.005f + 0.02f);
    EXPECT_FLOAT_EQ(shifted.y, 0.5f + 0.01f + 0.01f);

    // Projection applies the distortion before the camera matrix.
    const glm::vec2 pixel = tangential.Project({1.0f, 1.0f, 2.0f});
    EXPECT_FLOAT_EQ(pixel.x, 500.0f * shifted.x + 320.0f);
    EXPECT_FLOAT_EQ(pixel.y, 400.0f * shifted.y + 240.0f);
}

TEST(IntrinsicParams, StreamRoundTripAndLayout)
{
    const IntrinsicParams written = DistortedCamera();
    std::stringstream stream;
    written.WriteToStream(stream);
    EXPECT_EQ(stream.str().size(), 44u) << "a version word and ten floats";

    IntrinsicParams read;
    EXPECT_TRUE(read.ReadFromStream(stream));
    EXPECT_EQ(read, written);
}

TEST(IntrinsicParams, BadRecordsKeepPreviousValues)
{
    // Every cut of a good record, a newer version, and a record with a NaN among its values.
    std::stringstream full;
    DistortedCamera().WriteToStream(full);
    const std::string data = full.str();
    std::vector<std::string> records;
    for (std::size_t size = 0; size < data.size(); ++size)
        records.push_back(data.substr(0, size));
    records.push_back(data);
    records.back()[0] = 2;
    std::stringstream notFinite;
    runa::BinaryWriter writer(notFinite);
    writer.WriteVersion(1);
    for (int i = 0; i < 10; ++i)
        writer.Write(i == 7 ? std::numeric_limits<float>::quiet_NaN() : 1.0f);
    records.push_back(notFinite.str());

    for (const std::string& record : records) {
        SCOPED_TRACE("record of " + std::to_string(record.size()) + " bytes");
        testing_support::LogCapture log;
        std::istringstream in(record);
        IntrinsicParams params = Camera();
        EXPECT_FALSE(params.ReadFromStream(in));
        EXPECT_EQ(params, Camera());
        ASSERT_EQ(log.messages.size(), 1u);
        EXPECT_EQ(log.messages[0].label, "runa::IntrinsicParams::ReadFromStream");
    }
}
