#include "gui/GuiPanel.h"

#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>

#include <atomic>
#include <exception>
#include <mutex>

namespace vexa {

namespace {

constexpr const char* kTemplate = R"(<?xml version="1.0" encoding="UTF-8"?>
<GUILayout version="4">
    <Window type="DarkVexa/Panel" name="SidePanel">
        <Property name="Area" value="{{0,0},{0,0},{1,0},{0,50}}" />
        <Property name="Color" value="00454545" />
        <Window type="DarkVexa/Panel" name="panel_header">
            <Property name="Area" value="{{0,0},{0,0},{1,0},{0,24}}" />
            <Property name="Color" value="FF5D5D5D" />
            <Window type="DarkVexa/PushButton" name="btn_focus">
                <Property name="Area" value="{{0,0},{0,0},{0,24},{1,0}}" />
                <Property name="Glyph" value="Icons16px/zoom" />
                <Property name="RenderBackground" value="false" />
            </Window>
            <Window type="DarkVexa/Label" name="lab_title">
                <Property name="Area" value="{{0,28},{0,0},{0,248},{0,20}}" />
                <Property name="Font" value="InriaSans-12-Normal" />
                <Property name="Text" value="Title" />
                <Property name="HorzFormatting" value="LeftAligned" />
                <Property name="VertFormatting" value="BottomAligned" />
            </Window>
            <Window type="DarkVexa/PushButton" name="btn_pin">
                <Property name="Area" value="{{1,-48},{0,0},{1,-24},{1,0}}" />
                <Property name="Glyph" value="Icons16px/pin" />
                <Property name="RenderBackground" value="false" />
            </Window>
            <Window type="DarkVexa/PushButton" name="btn_remove">
                <Property name="Area" value="{{1,-24},{0,0},{1,0},{1,0}}" />
                <Property name="Glyph" value="Icons16px/close" />
                <Property name="RenderBackground" value="false" />
            </Window>
        </Window>
    </Window>
</GUILayout>
)";

constexpr float kMargin = 7.0f;

std::mutex templateMutex;
CEGUI::Window* templateWindow = nullptr;
std::atomic<unsigned int> panelCounter{0};

// Parsing the layout once and cloning it is much cheaper than parsing per panel. The template
// is re-made when the GUI system was restarted and took the old one with it.
CEGUI::Window* CloneTemplate()
{
    std::lock_guard<std::mutex> lock(templateMutex);
    CEGUI::WindowManager& manager = CEGUI::WindowManager::getSingleton();
    if (templateWindow == nullptr || !manager.isAlive(templateWindow))
        templateWindow = manager.loadLayoutFromString(kTemplate);
    return templateWindow->clone(true);
}

bool GuiAlive()
{
    return CEGUI::System::getSingletonPtr() != nullptr && CEGUI::WindowManager::getSingletonPtr() != nullptr;
}

} // namespace

GuiPanel::GuiPanel()
{
    try {
        window_ = CloneTemplate();
    } catch (const std::exception& e) {
        rlog::Fail(std::string("Can not build the panel template: ") + e.what(), "vexa::GuiPanel::GuiPanel");
        window_ = CEGUI::WindowManager::getSingleton().createWindow("DefaultWindow");
        window_->addChild(CEGUI::WindowManager::getSingleton().createWindow("DefaultWindow", "panel_header"));
    }
    header_ = window_->getChild("panel_header");
    window_->setMaxSize(CEGUI::USize(CEGUI::UDim(0, 0), CEGUI::UDim(0, 0)));
    window_->setMargin(
        CEGUI::UBox(CEGUI::UDim(0, 0), CEGUI::UDim(0, kMargin), CEGUI::UDim(0, kMargin), CEGUI::UDim(0, 0)));
    window_->setSize(CEGUI::USize(CEGUI::UDim(1, -kMargin), CEGUI::UDim(0, kHeaderHeight)));
    window_->setZOrderingEnabled(true);
    window_->setMouseInputPropagationEnabled(true);
    window_->setName("sidebar_panel_win_" + CEGUI::PropertyHelper<std::uint32_t>::toString(panelCounter++));

    header_->subscribeEvent(CEGUI::Window::EventMouseButtonUp,
                            CEGUI::Event::Subscriber(&GuiPanel::OnHeaderClicked, this));
    const auto connect = [this](CEGUI::Window* button, std::function<void()> GuiPanel::*member) {
        button->subscribeEvent(CEGUI::PushButton::EventClicked, [this, member](const CEGUI::EventArgs&) {
            // The callback may destroy this panel: run a copy that outlives it.
            std::function<void()> callback = this->*member;
            if (callback)
                callback();
            return true;
        });
    };
    if (CEGUI::Window* pin = GetButton("btn_pin")) {
        pin->setVisible(false);
        connect(pin, &GuiPanel::pinCallback_);
    }
    if (CEGUI::Window* remove = GetButton("btn_remove"))
        connect(remove, &GuiPanel::removeCallback_);
    if (CEGUI::Window* focus = GetButton("btn_focus"))
        focus->setVisible(false);
}

GuiPanel::~GuiPanel()
{
    if (!GuiAlive())
        return;
    CEGUI::WindowManager& manager = CEGUI::WindowManager::getSingleton();
    if (window_ == nullptr || !manager.isAlive(window_))
        return;
    if (column_ != nullptr && manager.isAlive(column_) && column_->isChild(window_)) {
        column_->removeChild(window_);
        RelayColumn();
    }
    manager.destroyWindow(window_);
}

CEGUI::Window* GuiPanel::GetButton(const char* name) const
{
    return header_->isChild(name) ? header_->getChild(name) : nullptr;
}

void GuiPanel::SetClientLayout(const std::string& layoutText)
{
    CEGUI::WindowManager& manager = CEGUI::WindowManager::getSingleton();
    CEGUI::Window* client = nullptr;
    try {
        if (layoutText.empty())
            client = manager.createWindow("DarkVexa/ArrayPanel", "unnamed");
        else
            client = manager.loadLayoutFromString(layoutText);
    } catch (const std::exception& e) {
        rlog::Fail(std::string("Can not build the client window: ") + e.what(),
                   "vexa::GuiPanel::SetClientLayout");
        return;
    }
    if (client == nullptr) {
        rlog::Fail("The layout text holds no window", "vexa::GuiPanel::SetClientLayout");
        return;
    }
    if (client_ != nullptr)
        manager.destroyWindow(client_);
    client_ = client;
    client_->setName("client_window");
    client_->setPosition(CEGUI::UVector2(CEGUI::UDim(0, 0), CEGUI::UDim(0, kHeaderHeight)));
    client_->setSize(CEGUI::USize(CEGUI::UDim(1, 0), CEGUI::UDim(1, -kHeaderHeight)));
    client_->setVisible(!collapsed_);
    window_->addChild(client_);
    client_->subscribeEvent(CEGUI::Window::EventSized,
                            CEGUI::Event::Subscriber(&GuiPanel::OnClientSized, this));
}

bool GuiPanel::OnClientSized(const CEGUI::EventArgs&)
{
    SetClientHeight(static_cast<int>(client_->getPixelSize().d_height));
    return true;
}

void GuiPanel::SetTitle(const std::string& text)
{
    header_->getChild("lab_title")->setText(text);
}

void GuiPanel::SetFocusVisible(bool visible)
{
    CEGUI::Window* focus = GetButton("btn_focus");
    if (focus == nullptr)
        return;
    focus->setVisible(visible);
    header_->getChild("lab_title")->setXPosition(CEGUI::UDim(0, visible ? 28.0f : 8.0f));
    if (visible)
        focus->activate();
}

void GuiPanel::SetPinVisible(bool visible)
{
    if (CEGUI::Window* pin = GetButton("btn_pin"))
        pin->setVisible(visible);
}

void GuiPanel::HideRemoveButton()
{
    CEGUI::Window* remove = GetButton("btn_remove");
    if (remove == nullptr || !remove->isVisible())
        return;
    remove->setVisible(false);
    if (CEGUI::Window* pin = GetButton("btn_pin"))
        pin->setArea(CEGUI::URect(CEGUI::UDim(1, -kHeaderHeight), CEGUI::UDim(0, 0), CEGUI::UDim(1, 0),
                                  CEGUI::UDim(1, 0)));
}

void GuiPanel::AttachTo(CEGUI::Window* column)
{
    if (column == nullptr) {
        rlog::Warn("No column to attach the panel to", "vexa::GuiPanel::AttachTo");
        return;
    }
    column_ = column;
    if (client_ == nullptr)
        SetClientLayout("");
    if (attached_) {
        if (!column_->isChild(window_))
            column_->addChild(window_);
        RelayColumn();
    }
}

void GuiPanel::SetClientHeight(int h)
{
    expandedHeight_ = static_cast<float>(h) + kHeaderHeight;
    if (collapsed_)
        return;
    window_->setHeight(CEGUI::UDim(0, expandedHeight_));
    RelayColumn();
}

void GuiPanel::SetCollapsed(bool collapsed)
{
    if (collapsed == collapsed_)
        return;
    collapsed_ = collapsed;
    if (collapsed_) {
        if (scrollPane_ != nullptr)
            scrollPane_->setVerticalScrollPosition(0.0f);
        // The client shrinks with the panel; muted, it does not report that as its new height.
        if (client_ != nullptr) {
            client_->hide();
            client_->setMutedState(true);
        }
        window_->setHeight(CEGUI::UDim(0, kHeaderHeight));
        if (client_ != nullptr)
            client_->setMutedState(false);
    } else {
        if (client_ != nullptr)
            client_->setMutedState(true);
        window_->setHeight(CEGUI::UDim(0, expandedHeight_));
        if (client_ != nullptr) {
            client_->setMutedState(false);
            client_->show();
            client_->activate();
        }
        window_->invalidate(true);
    }
    RelayColumn();
}

bool GuiPanel::OnHeaderClicked(const CEGUI::EventArgs&)
{
    SetCollapsed(!collapsed_);
    return true;
}

void GuiPanel::RelayColumn() const
{
    if (auto* container = dynamic_cast<CEGUI::LayoutContainer*>(column_))
        container->layout();
}

} // namespace vexa
