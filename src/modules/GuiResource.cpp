#include <vexa/modules/GuiResource.h>

#include <vexa/modules/GuiGadget.h>

#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>

namespace vexa::modules {

GuiResource::GuiResource(const std::string& name) : Resource(name, "GuiDataUnit") {}

GuiResource::~GuiResource()
{
    DestroyTree();
}

void GuiResource::DestroyTree()
{
    CEGUI::Window* root = holder_->root;
    holder_->root = nullptr;
    holder_->gadget = nullptr;
    // After the GUI system has gone its windows went with it.
    CEGUI::WindowManager* windows = CEGUI::WindowManager::getSingletonPtr();
    if (root != nullptr && windows != nullptr && windows->isAlive(root))
        windows->destroyWindow(root);
}

bool GuiResource::Setup(const std::string& layout)
{
    const char* label = "vexa::modules::GuiResource::Setup";
    DestroyTree();
    CEGUI::WindowManager* windows = CEGUI::WindowManager::getSingletonPtr();
    if (windows == nullptr) {
        rlog::Fail("The GUI is not running: call vexa::Initialize before setting up \"" + GetId().ToString() +
                       "\"",
                   label);
        return false;
    }
    try {
        holder_->root = windows->loadLayoutFromString(CEGUI::String(layout.c_str()));
    } catch (const CEGUI::Exception& e) {
        rlog::Fail("The layout of \"" + GetId().ToString() + "\" was not loaded: " + e.getMessage().c_str(),
                   label);
        holder_->root = nullptr;
    }
    if (holder_->root == nullptr)
        return false;
    // The GUI system destroys every window when the viewer ends: the host must then get null,
    // not a dangling pointer.
    std::weak_ptr<Holder> weak = holder_;
    holder_->root->subscribeEvent(CEGUI::Window::EventDestructionStarted, [weak](const CEGUI::EventArgs&) {
        if (const std::shared_ptr<Holder> holder = weak.lock()) {
            holder->root = nullptr;
            holder->gadget = nullptr;
        }
        return false;
    });
    ResetGadgets();
    return true;
}

CEGUI::Window* GuiResource::GetMainRootWindow() const
{
    CEGUI::System* system = CEGUI::System::getSingletonPtr();
    return system == nullptr ? nullptr : system->getDefaultGUIContext().getRootWindow();
}

CEGUI::Window* GuiResource::GetWindow(const std::string& name) const
{
    CEGUI::Window* root = holder_->root;
    if (root == nullptr)
        return nullptr;
    const CEGUI::String wanted(name.c_str());
    if (root->getName() == wanted)
        return root;
    return root->getChildRecursive(wanted);
}

std::shared_ptr<Gadget> GuiResource::CreateGadget()
{
    return std::make_shared<GuiGadget>(this);
}

} // namespace vexa::modules
