#pragma once
// The sidebar's "Resource Inspector": every resource of the library as a tree of folders made
// from the path components of the names ("scans/left/cloud0" lies in scans/left/), browsed
// with home, up and a click into a folder, or searched by a part of a name. Picking a resource
// hands its id to the selection callback; the sidebar then selects it.
//
// Changes only mark the list dirty; the next Update rebuilds it once, so a host that adds
// thousands of resources between two updates pays for one rebuild, and an idle Update for none.

#include "gui/GuiPanel.h"

#include <vexa/ResourceId.h>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace CEGUI {
class AnimationInstance;
class ItemEntry;
class ItemListbox;
} // namespace CEGUI

namespace vexa {

class GuiResourceInspector : public GuiPanel {
public:
    enum class Mode { Browsing = 0, Search = 1 };

    GuiResourceInspector();
    ~GuiResourceInspector() override;

    /// Does nothing when the tree already holds the resource.
    void InsertResource(const ResourceId& id);
    /// Folders left empty go with it.
    void EraseResource(const ResourceId& id);
    /// Follows the library's resource added / removed notifications from now on, after
    /// taking in `existing`.
    void FollowResources(const std::vector<ResourceId>& existing);
    /// The resource to show selected (empty for none); its item blinks at the next rebuild.
    void SetSelected(const ResourceId& id);
    void SetSelectionCallback(std::function<void(const ResourceId&)> callback)
    {
        selectionCallback_ = std::move(callback);
    }

    /// Rebuilds the list when something changed since the last rebuild; returns whether the
    /// panel needs drawing again (rebuilt, or its selected item still blinking).
    bool Update();

    // Browsing, as the panel's buttons and edit box do it.
    void GoHome();
    void GoUp();
    void SetSearchText(const std::string& text);
    void ClearSearch();

    Mode GetMode() const { return mode_; }
    /// The current folder's path, components joined with "/" ("" at the root).
    std::string GetLocationPath() const;
    bool IsDirty() const { return dirty_; }
    std::size_t GetResourceCount() const { return resourceCount_; }
    /// How many times the list was rebuilt.
    std::size_t GetRebuildCount() const { return rebuilds_; }
    CEGUI::ItemListbox* GetList() const { return list_; }

    /// The "unitsel_blink" animation's name.
    static constexpr const char* kBlinkAnimation = "unitsel_blink";

private:
    struct Node {
        std::string name;
        Node* parent = nullptr;
        std::map<std::string, std::unique_ptr<Node>> children;
        /// The resources whose last path component is this node (usually one; two types may
        /// share a name).
        std::set<ResourceId> resources;
    };
    /// What a list item stands for: a folder (by its path, which survives tree edits) or a
    /// resource.
    struct Entry {
        bool folder = false;
        std::vector<std::string> path;
        ResourceId id;
    };

    static std::vector<std::string> SplitPath(const std::string& name);
    static std::vector<std::string> PathOf(const Node* node);
    Node* Find(const std::vector<std::string>& path) const;
    void Rebuild();
    CEGUI::ItemEntry* AddItem(const std::string& text, bool folder, Entry entry, bool selected);
    void Collect(const Node& node, const std::string& needle, std::vector<const Node*>& hits) const;
    void OnItemPicked(std::size_t entryIndex);
    void StopBlink();

    Node root_;
    Node* location_ = &root_;
    Mode mode_ = Mode::Browsing;
    bool dirty_ = true;
    bool rebuilding_ = false;
    bool blinkRequested_ = false;
    std::string searchText_;
    ResourceId selected_;
    std::size_t resourceCount_ = 0;
    std::size_t rebuilds_ = 0;
    std::vector<Entry> entries_;
    /// Every item window made so far; the first usedItems_ are in the list.
    std::vector<CEGUI::ItemEntry*> items_;
    std::size_t usedItems_ = 0;
    std::function<void(const ResourceId&)> selectionCallback_;
    CEGUI::Window* search_ = nullptr;
    CEGUI::Window* locationLabel_ = nullptr;
    CEGUI::ItemListbox* list_ = nullptr;
    CEGUI::AnimationInstance* blink_ = nullptr;
};

} // namespace vexa
