#pragma once
// A push button; every click is a change.

#include <vexa/Export.h>
#include <vexa/gui/TElement.h>

#include <string>

namespace CEGUI {
class PushButton;
}

namespace vexa::gui {

class VEXA_API Button : public TElement<Button> {
public:
    explicit Button(CEGUI::PushButton* widget);
    Button(const Button& other);
    Button(Button&& other) noexcept;
    ~Button() override;

    Button* SetCaption(const std::string& caption);
    std::string GetCaption() const;

    CEGUI::PushButton* GetWidget() const { return widget_; }

private:
    void Connect();

    CEGUI::PushButton* widget_ = nullptr;
};

} // namespace vexa::gui
