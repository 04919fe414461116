#pragma once
// A line of static text.

#include <vexa/Export.h>
#include <vexa/gui/TElement.h>

#include <string>

namespace vexa::gui {

class VEXA_API Label : public TElement<Label> {
public:
    explicit Label(CEGUI::Window* widget);
    Label(const Label& other);
    Label(Label&& other) noexcept;
    ~Label() override;

    virtual Label* Set(const std::string& text);
    virtual std::string Get() const;

    CEGUI::Window* GetWidget() const { return widget_; }

private:
    CEGUI::Window* widget_ = nullptr;
};

} // namespace vexa::gui
