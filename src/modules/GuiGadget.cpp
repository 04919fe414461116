#include <vexa/modules/GuiGadget.h>

#include <vexa/GuiGenerator.h>

#include <CEGUI/Window.h>
#include <CEGUI/WindowManager.h>

namespace vexa::modules {

GuiGadget::GuiGadget(const GuiResource* resource)
    : Gadget(resource),
      holder_(resource != nullptr ? resource->GetHolder() : std::make_shared<GuiResource::Holder>())
{
}

GuiGadget::~GuiGadget()
{
    Release();
}

void GuiGadget::Initialize()
{
    // Nothing to draw and nothing kept: the sidebar asks for the panel once this is set.
    Gadget::Initialize();
}

void GuiGadget::Terminate()
{
    Release();
    Gadget::Terminate();
}

bool GuiGadget::IsHolding() const
{
    return holder_->root != nullptr && holder_->gadget == this;
}

void GuiGadget::Release()
{
    if (holder_->gadget != this)
        return;
    holder_->gadget = nullptr;
    // Out of the panel before the panel goes, so that nothing of the host's is destroyed with it.
    CEGUI::Window* root = holder_->root;
    CEGUI::WindowManager* windows = CEGUI::WindowManager::getSingletonPtr();
    if (root != nullptr && windows != nullptr && windows->isAlive(root) && root->getParent() != nullptr)
        root->getParent()->removeChild(root);
}

void GuiGadget::GenerateGui(GuiGenerator& generator)
{
    Gadget::GenerateGui(generator);
    if (!IsInitialized())
        return;
    if (holder_->root == nullptr) {
        generator.AddLabel("No panel set up yet");
        return;
    }
    if (holder_->gadget != nullptr && holder_->gadget != this) {
        generator.AddLabel("Shown in another view area's sidebar");
        return;
    }
    if (generator.AddWindow(holder_->root) != nullptr)
        holder_->gadget = this;
}

} // namespace vexa::modules
