#pragma once
// The per-vertex colour sets and float data of a point cloud, mesh or scan, copied once from
// the host's data so that every view area can colour the content by them on demand. Shared
// by every content module that colours its vertices.

#include <vexa/Export.h>

#include <tesk/Color.h>
#include <tesk/PointCloud.h>

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace vexa::modules {

class VEXA_API ColoringData {
public:
    /// One float property with its range. The range always includes 0 (both ends start
    /// there), so a data mapping shows values relative to zero, not to their minimum.
    struct DataRecord {
        std::vector<float> values;
        float minimum = 0.0f;
        float maximum = 0.0f;
    };

    /// One colour set, in the form the host gave it: floats, or bytes (kept as bytes, a
    /// quarter of the memory, and uploaded as they are).
    using ColorSet = std::variant<std::vector<tesk::Color3f>, std::vector<tesk::Color3b>>;

    /// Colour `index` of a set as floats (0..1); black past the end.
    static tesk::Color3f ColorAt(const ColorSet& set, std::size_t index);
    /// The set as floats, for consumers that take only those.
    static std::vector<tesk::Color3f> ToFloatColors(const ColorSet& set);

    /// Takes the colour properties (float and byte ones) and float properties of `cloud`, in
    /// the cloud's order, at
    /// most `count` values each; replaces whatever was stored.
    void Store(const tesk::PointCloud& cloud, std::size_t count);

    bool IsColoringAvailable() const { return !coloringNames_.empty(); }
    bool HasFloatData() const { return !fdataNames_.empty(); }
    const std::vector<std::string>& GetColoringNames() const { return coloringNames_; }
    const std::vector<std::string>& GetFDataNames() const { return fdataNames_; }
    /// Throws std::out_of_range past the end.
    const ColorSet& GetColoringOption(std::size_t index) const;
    /// Throws std::out_of_range past the end.
    const DataRecord& GetFDataOption(std::size_t index) const;

    /// What a pick reports about vertex `index`: "; <set> (r, g, b)" for every colour set,
    /// then "; <property> <value>" for every float property.
    std::string DescribeValues(std::size_t index) const;

    /// A value as a person reads it: at most four decimals and no trailing zeros (0.3, not
    /// 0.30000001); tiny and huge values keep four significant digits with an exponent.
    static std::string FormatValue(double value);

private:
    std::vector<std::string> coloringNames_;
    std::vector<ColorSet> coloringOptions_;
    std::vector<std::string> fdataNames_;
    std::vector<DataRecord> fdataOptions_;
};

} // namespace vexa::modules
