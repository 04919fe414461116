#pragma once
// A panel of the host's own, written as a CEGUI layout, shown in the sidebar of the view
// areas that show the resource. The host reaches its widgets by name and subscribes to their
// CEGUI events itself:
//
//   auto panel = std::make_shared<vexa::modules::GuiResource>("Tools");
//   panel->Setup(layoutText);            // after vexa::Initialize
//   vexa::AddResource(panel);
//   panel->GetWindow("Apply")->subscribeEvent(CEGUI::PushButton::EventClicked, handler);
//
// Layouts use the viewer's widget looks ("DarkVexa/PushButton", "DarkVexa/Checkbox",
// "DarkVexa/Label", "DarkVexa/Slider", "DarkVexa/Spinner", "DarkVexa/Editbox", ...) so that the
// panel looks like the rest of the sidebar. Give the root a relative width ({1,0}) and an
// absolute height: the row holding it is as tall as that height.
//
// A CEGUI window has one parent, so the panel is shown in one sidebar at a time: the first
// view area to build its panel holds it, the others say where it is.

#include <vexa/Export.h>
#include <vexa/Resource.h>

#include <memory>
#include <string>

namespace CEGUI {
class Window;
}

namespace vexa::modules {

class VEXA_API GuiResource : public Resource {
public:
    /// Which gadget holds the window tree in its panel; shared with the gadgets so that
    /// neither side outlives the other's knowledge of it.
    struct Holder {
        CEGUI::Window* root = nullptr;
        const void* gadget = nullptr;
    };

    /// A resource without a window; resource type "GuiDataUnit".
    explicit GuiResource(const std::string& name);
    /// Destroys the window tree while the GUI system still runs.
    ~GuiResource();
    GuiResource(const GuiResource&) = delete;
    GuiResource& operator=(const GuiResource&) = delete;

    /// Destroys the present window tree, then loads `layout` (CEGUI layout XML) and makes its
    /// root the resource's window; every view area rebuilds the panel. False (logged, no
    /// window left) when the GUI system is not running or the text is not a valid layout.
    bool Setup(const std::string& layout);
    /// The layout's root window; null before a successful Setup.
    CEGUI::Window* GetRootWindow() const { return holder_->root; }
    /// The viewer's own top-level GUI window, for windows that float over every view area;
    /// null before vexa::Initialize.
    CEGUI::Window* GetMainRootWindow() const;
    /// The root itself when its name is `name`, else the first window of that name below it;
    /// null when there is no window tree or no such window.
    CEGUI::Window* GetWindow(const std::string& name) const;

    std::shared_ptr<Gadget> CreateGadget() override;
    const std::shared_ptr<Holder>& GetHolder() const { return holder_; }

private:
    void DestroyTree();

    std::shared_ptr<Holder> holder_ = std::make_shared<Holder>();
};

} // namespace vexa::modules
