#pragma once
// A horizontal rule between groups of rows.

#include <vexa/Export.h>
#include <vexa/gui/TElement.h>

namespace vexa::gui {

class VEXA_API Separator : public TElement<Separator> {
public:
    explicit Separator(CEGUI::Window* widget);
    Separator(const Separator& other);
    Separator(Separator&& other) noexcept;
    ~Separator() override;

    CEGUI::Window* GetWidget() const { return widget_; }

private:
    CEGUI::Window* widget_ = nullptr;
};

} // namespace vexa::gui
