#include "gui/GuiResourceBrowser.h"

#include "core/Notifications.h"
#include "gui/CeguiText.h"

#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>

#include <algorithm>
#include <cctype>

namespace vexa {

namespace {

constexpr const char* kLayout = R"(<?xml version="1.0" encoding="UTF-8"?>
<GUILayout version="4">
    <Window type="DarkVexa/Panel" name="root">
        <Property name="Area" value="{{0,0},{0,0},{1,0},{1,0}}" />
        <Property name="ZOrderingEnabled" value="false" />
        <Window type="DarkVexa/PushButton" name="BtnHome">
            <Property name="Area" value="{{0,5},{0,8},{0,29},{0,32}}" />
            <Property name="Glyph" value="Icons16px/home" />
            <Property name="RenderBackground" value="false" />
            <Property name="TooltipText" value="All resources" />
            <Property name="ZOrderingEnabled" value="false" />
        </Window>
        <Window type="DarkVexa/PushButton" name="BtnUp">
            <Property name="Area" value="{{0,35},{0,8},{0,59},{0,32}}" />
            <Property name="Glyph" value="Icons16px/back" />
            <Property name="RenderBackground" value="false" />
            <Property name="TooltipText" value="Up one folder" />
            <Property name="ZOrderingEnabled" value="false" />
        </Window>
        <Window type="DarkVexa/Editbox" name="EditSearch">
            <Property name="Area" value="{{0,65},{0,8},{1,-5},{0,32}}" />
            <Property name="ZOrderingEnabled" value="false" />
            <Window type="DarkVexa/PushButton" name="BtnSearchClear">
                <Property name="Area" value="{{1,-22},{0,0},{1,0},{1,0}}" />
                <Property name="Glyph" value="Icons16px/close" />
                <Property name="RenderBackground" value="false" />
                <Property name="ZOrderingEnabled" value="false" />
            </Window>
        </Window>
        <Window type="DarkVexa/Label" name="LabLocation">
            <Property name="Area" value="{{0,7},{0,40},{1,-7},{0,55}}" />
            <Property name="Text" value="/Location" />
            <Property name="HorzFormatting" value="LeftAligned" />
            <Property name="VertFormatting" value="BottomAligned" />
            <Property name="ZOrderingEnabled" value="false" />
        </Window>
        <Window type="DarkVexa/ItemListbox" name="ListUnits">
            <Property name="Area" value="{{0,6},{0,60},{1,-6},{1,-6}}" />
            <Property name="SortEnabled" value="true" />
            <Property name="ZOrderingEnabled" value="false" />
        </Window>
    </Window>
</GUILayout>
)";

// The list shows five items before it scrolls, which leaves room for the resource panels.
constexpr int kClientHeight = 170;
constexpr const char* kFolderColour = "FF797979";
constexpr std::size_t kMaxSearchHits = 1000;

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string Join(const std::vector<std::string>& path)
{
    std::string text;
    for (std::size_t i = 0; i < path.size(); ++i)
        text += (i == 0 ? "" : "/") + path[i];
    return text;
}

void DefineBlink()
{
    CEGUI::AnimationManager& animations = CEGUI::AnimationManager::getSingleton();
    if (animations.isAnimationPresent(GuiResourceInspector::kBlinkAnimation))
        return;
    CEGUI::Animation* blink = animations.createAnimation(GuiResourceInspector::kBlinkAnimation);
    blink->setDuration(1.2f);
    blink->setReplayMode(CEGUI::Animation::RM_Once);
    CEGUI::Affector* alpha = blink->createAffector("Alpha", "float");
    // Three blinks: down to 0.1 and back, three times.
    const float times[] = {0.0f, 0.2f, 0.4f, 0.6f, 0.8f, 1.0f, 1.2f};
    for (int i = 0; i < 7; ++i)
        alpha->createKeyFrame(times[i], i % 2 == 0 ? "1.0" : "0.1", CEGUI::KeyFrame::P_Linear);
}

} // namespace

GuiResourceInspector::GuiResourceInspector()
{
    SetTitle("Resource Inspector");
    HideRemoveButton();
    SetClientLayout(kLayout);
    CEGUI::Window* client = GetClientWindow();
    search_ = client->getChild("EditSearch");
    locationLabel_ = client->getChild("LabLocation");
    list_ = static_cast<CEGUI::ItemListbox*>(client->getChild("ListUnits"));
    SetClientHeight(kClientHeight);

    // Scrollbars over the items rather than beside them, and without arrows: the list is
    // narrow and the wheel scrolls it.
    for (CEGUI::Scrollbar* bar : {list_->getVertScrollbar(), list_->getHorzScrollbar()}) {
        bar->setAlwaysOnTop(true);
        bar->getIncreaseButton()->hide();
        bar->getDecreaseButton()->hide();
    }
    list_->getContentPane()->setMouseInputPropagationEnabled(true);
    DefineBlink();

    const auto on = [](CEGUI::Window* window, const CEGUI::String& event, std::function<void()> action) {
        window->subscribeEvent(event, [action = std::move(action)](const CEGUI::EventArgs&) {
            action();
            return true;
        });
    };
    on(client->getChild("BtnHome"), CEGUI::PushButton::EventClicked, [this] { GoHome(); });
    on(client->getChild("BtnUp"), CEGUI::PushButton::EventClicked, [this] { GoUp(); });
    on(search_->getChild("BtnSearchClear"), CEGUI::PushButton::EventClicked, [this] { ClearSearch(); });
    on(search_, CEGUI::Window::EventTextChanged,
       [this] { SetSearchText(gui::FromCeguiText(search_->getText())); });
    on(list_, CEGUI::ItemListbox::EventSelectionChanged, [this] {
        if (rebuilding_)
            return;
        if (CEGUI::ItemEntry* item = list_->getFirstSelectedItem())
            OnItemPicked(item->getID());
    });
}

GuiResourceInspector::~GuiResourceInspector()
{
    GetNotifications().Unsubscribe(this);
    if (CEGUI::System::getSingletonPtr() == nullptr)
        return;
    StopBlink();
    // The list does not destroy the items (they are reused), so they go here, listed or not.
    CEGUI::WindowManager& windows = CEGUI::WindowManager::getSingleton();
    for (CEGUI::ItemEntry* item : items_)
        if (windows.isAlive(item))
            windows.destroyWindow(item);
}

std::vector<std::string> GuiResourceInspector::SplitPath(const std::string& name)
{
    // Empty components ("a//b", a leading or trailing "/") make no folders of their own.
    std::vector<std::string> path;
    std::size_t begin = 0;
    while (begin <= name.size()) {
        std::size_t end = name.find('/', begin);
        if (end == std::string::npos)
            end = name.size();
        if (end > begin)
            path.push_back(name.substr(begin, end - begin));
        begin = end + 1;
    }
    if (path.empty())
        path.push_back(name);
    return path;
}

std::vector<std::string> GuiResourceInspector::PathOf(const Node* node)
{
    std::vector<std::string> path;
    for (; node != nullptr && node->parent != nullptr; node = node->parent)
        path.push_back(node->name);
    std::reverse(path.begin(), path.end());
    return path;
}

GuiResourceInspector::Node* GuiResourceInspector::Find(const std::vector<std::string>& path) const
{
    const Node* node = &root_;
    for (const std::string& component : path) {
        auto it = node->children.find(component);
        if (it == node->children.end())
            return nullptr;
        node = it->second.get();
    }
    return const_cast<Node*>(node);
}

void GuiResourceInspector::InsertResource(const ResourceId& id)
{
    Node* node = &root_;
    for (const std::string& component : SplitPath(id.name)) {
        std::unique_ptr<Node>& child = node->children[component];
        if (!child) {
            child = std::make_unique<Node>();
            child->name = component;
            child->parent = node;
        }
        node = child.get();
    }
    if (node->resources.insert(id).second) {
        ++resourceCount_;
        dirty_ = true;
    }
}

void GuiResourceInspector::EraseResource(const ResourceId& id)
{
    Node* node = Find(SplitPath(id.name));
    if (node == nullptr || node->resources.erase(id) == 0)
        return;
    --resourceCount_;
    dirty_ = true;
    // Take away the folders this leaves empty; the location moves up out of them.
    while (node != &root_ && node->resources.empty() && node->children.empty()) {
        Node* parent = node->parent;
        for (const Node* at = location_; at != nullptr; at = at->parent)
            if (at == node) {
                location_ = parent;
                break;
            }
        parent->children.erase(node->name);
        node = parent;
    }
    // A location that lost its last child is no folder any more.
    while (location_ != &root_ && location_->children.empty())
        location_ = location_->parent;
}

void GuiResourceInspector::FollowResources(const std::vector<ResourceId>& existing)
{
    for (const ResourceId& id : existing)
        InsertResource(id);
    Notifications& notifications = GetNotifications();
    notifications.Unsubscribe(this);
    notifications.Subscribe(this, kResourceAdded, [this](const void* data) {
        InsertResource(*static_cast<const ResourceId*>(data));
    });
    notifications.Subscribe(this, kResourceRemoved, [this](const void* data) {
        EraseResource(*static_cast<const ResourceId*>(data));
    });
}

void GuiResourceInspector::SetSelected(const ResourceId& id)
{
    selected_ = id;
    blinkRequested_ = id.IsValid();
    dirty_ = true;
}

std::string GuiResourceInspector::GetLocationPath() const
{
    return Join(PathOf(location_));
}

void GuiResourceInspector::GoHome()
{
    if (mode_ == Mode::Browsing && location_ == &root_)
        return;
    location_ = &root_;
    mode_ = Mode::Browsing;
    dirty_ = true;
}

void GuiResourceInspector::GoUp()
{
    if (mode_ == Mode::Search)
        mode_ = Mode::Browsing;
    else if (location_->parent != nullptr)
        location_ = location_->parent;
    dirty_ = true;
}

void GuiResourceInspector::SetSearchText(const std::string& text)
{
    searchText_ = text;
    mode_ = text.empty() ? Mode::Browsing : Mode::Search;
    dirty_ = true;
}

void GuiResourceInspector::ClearSearch()
{
    // Emptying the box reports the change, which leaves search mode.
    search_->setText("");
    search_->activate();
    if (mode_ == Mode::Search)
        mode_ = Mode::Browsing;
    dirty_ = true;
}

void GuiResourceInspector::OnItemPicked(std::size_t entryIndex)
{
    if (entryIndex >= entries_.size())
        return;
    // A copy: the callback may change what the entries hold.
    const Entry entry = entries_[entryIndex];
    dirty_ = true;
    if (!entry.folder) {
        if (selectionCallback_)
            selectionCallback_(entry.id);
        return;
    }
    if (Node* folder = Find(entry.path)) {
        location_ = folder;
        mode_ = Mode::Browsing;
    }
}

bool GuiResourceInspector::Update()
{
    if (dirty_) {
        Rebuild();
        return true;
    }
    return blink_ != nullptr && blink_->isRunning();
}

void GuiResourceInspector::StopBlink()
{
    if (blink_ == nullptr)
        return;
    CEGUI::AnimationManager::getSingleton().destroyAnimationInstance(blink_);
    blink_ = nullptr;
}

void GuiResourceInspector::Rebuild()
{
    dirty_ = false;
    ++rebuilds_;
    rebuilding_ = true;
    StopBlink();
    // While initialising, the list neither sorts nor lays out its items on every change; it
    // does both once at the end. Without that, a search with a thousand hits costs a second.
    list_->beginInitialisation();
    list_->resetList();
    entries_.clear();
    usedItems_ = 0;

    std::vector<const Node*> shown;
    if (mode_ == Mode::Search) {
        Collect(root_, Lower(searchText_), shown);
        // A CEGUI list of thousands of items costs seconds to fill; a search that broad is
        // narrowed by typing on, so only its first hits are listed, and the label says so.
        if (shown.size() > kMaxSearchHits) {
            locationLabel_->setText(gui::ToCeguiText("Search Results (first " +
                                                     std::to_string(kMaxSearchHits) + " of " +
                                                     std::to_string(shown.size()) + ")"));
            shown.resize(kMaxSearchHits);
        } else {
            locationLabel_->setText("Search Results");
        }
    } else {
        shown.reserve(location_->children.size());
        for (const auto& [name, child] : location_->children)
            shown.push_back(child.get());
        locationLabel_->setText(gui::ToCeguiText("/" + GetLocationPath()));
    }

    const bool blink = blinkRequested_;
    blinkRequested_ = false;
    for (const Node* node : shown) {
        // A name that is both a folder and a resource ("a" beside "a/b") gets an item for each.
        if (!node->children.empty())
            AddItem(node->name + "/", true, Entry{true, PathOf(node), {}}, false);
        for (const ResourceId& id : node->resources) {
            const bool selected = selected_.IsValid() && id == selected_;
            CEGUI::ItemEntry* item = AddItem(node->name, false, Entry{false, {}, id}, selected);
            if (selected && blink) {
                blink_ = CEGUI::AnimationManager::getSingleton().instantiateAnimation(kBlinkAnimation);
                blink_->setTargetWindow(item);
                // The step of the frame that built the list is skipped, so a slow rebuild
                // does not eat the first blink.
                blink_->start();
            }
        }
    }
    list_->endInitialisation();
    rebuilding_ = false;

    // After a search with thousands of hits, the spare windows are not kept for ever.
    if (items_.size() > 2 * usedItems_ + 64) {
        CEGUI::WindowManager& windows = CEGUI::WindowManager::getSingleton();
        for (std::size_t i = usedItems_; i < items_.size(); ++i)
            windows.destroyWindow(items_[i]);
        items_.resize(usedItems_);
    }
}

CEGUI::ItemEntry* GuiResourceInspector::AddItem(const std::string& text, bool folder, Entry entry,
                                                bool selected)
{
    // Item windows are kept from one rebuild to the next: making and destroying a CEGUI window
    // costs more than all the rest of a rebuild.
    if (usedItems_ == items_.size()) {
        auto* made = static_cast<CEGUI::ItemEntry*>(
            CEGUI::WindowManager::getSingleton().createWindow("DarkVexa/ListboxItem"));
        made->setDestroyedByParent(false);
        made->setMouseInputPropagationEnabled(true);
        made->setZOrderingEnabled(false);
        items_.push_back(made);
    }
    CEGUI::ItemEntry* item = items_[usedItems_++];
    item->setText(gui::ToCeguiText(text));
    item->setID(static_cast<unsigned int>(entries_.size()));
    item->setProperty("TextColour",
                      folder ? CEGUI::String(kFolderColour) : item->getPropertyDefault("TextColour"));
    item->setSelected(false);
    item->setAlpha(1.0f);
    entries_.push_back(std::move(entry));
    list_->addItem(item);
    if (selected)
        item->setSelected(true);
    return item;
}

void GuiResourceInspector::Collect(const Node& node, const std::string& needle,
                                   std::vector<const Node*>& hits) const
{
    for (const auto& [name, child] : node.children) {
        if (Lower(name).find(needle) != std::string::npos)
            hits.push_back(child.get());
        Collect(*child, needle, hits);
    }
}

} // namespace vexa
