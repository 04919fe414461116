#pragma once
// The state the user gave each view area (camera pose, axes, grid, clipping planes, sidebar),
// kept between runs in "viewareas.bin". Records are matched to view areas by position in the
// list; a file written for another number of view areas belongs to another layout and is
// not applied.

#include "core/FileStorage.h"
#include "core/Looks.h"

#include <memory>
#include <vector>

namespace vexa {

class Viewarea;

class ViewareaSettings : public FileStorage {
public:
    std::string GetFileName() const override { return "viewareas.bin"; }
    std::uint32_t GetFormatVersion() const override { return 1; }

    bool ReadPayload(std::istream& in) override;
    void WritePayload(std::ostream& out) const override;

    const std::vector<ViewareaLook>& GetRecords() const { return records_; }
    void SetRecords(std::vector<ViewareaLook> records) { records_ = std::move(records); }

    /// Takes over the current state of every view area, in list order.
    void Capture(const std::vector<std::unique_ptr<Viewarea>>& areas);
    /// Gives each view area its stored record. Returns false (and changes nothing) when the
    /// number of records does not match the number of view areas.
    bool Apply(const std::vector<std::unique_ptr<Viewarea>>& areas) const;

    /// The state of one view area as a record; placement and rules come from its look.
    static ViewareaLook CaptureOne(const Viewarea& area);
    static void ApplyOne(Viewarea& area, const ViewareaLook& record);

private:
    std::vector<ViewareaLook> records_;
};

} // namespace vexa
