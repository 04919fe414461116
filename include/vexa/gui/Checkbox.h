#pragma once
// An on/off switch with a caption.

#include <vexa/Export.h>
#include <vexa/gui/LinkedElement.h>

namespace CEGUI {
class ToggleButton;
}

namespace vexa::gui {

class VEXA_API Checkbox : public LinkedElement<bool, Checkbox> {
public:
    explicit Checkbox(CEGUI::ToggleButton* widget);
    Checkbox(const Checkbox& other);
    Checkbox(Checkbox&& other) noexcept;
    ~Checkbox() override;

    Checkbox* Set(bool checked) override;
    bool Get() const override;

    CEGUI::ToggleButton* GetWidget() const { return widget_; }

private:
    void Connect();

    CEGUI::ToggleButton* widget_ = nullptr;
};

} // namespace vexa::gui
