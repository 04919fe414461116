#pragma once
// A collapsible sidebar panel: a 24 px header (focus button, title, pin and remove buttons)
// over a client window. The panel's height follows the client window, so a panel whose rows
// change grows or shrinks in its column without the owner doing anything.

#include <functional>
#include <string>

namespace CEGUI {
class EventArgs;
class ScrollablePane;
class Window;
} // namespace CEGUI

namespace vexa {

class GuiPanel {
public:
    static constexpr float kHeaderHeight = 24.0f;

    GuiPanel();
    virtual ~GuiPanel();
    GuiPanel(const GuiPanel&) = delete;
    GuiPanel& operator=(const GuiPanel&) = delete;

    /// Expanded height := h + header; applied at once unless collapsed.
    virtual void SetClientHeight(int h);

    /// An empty text makes a "DarkVexa/ArrayPanel" client; otherwise the text is a layout.
    /// Replaces an earlier client window. Logs and keeps the old one when the text is bad.
    void SetClientLayout(const std::string& layoutText);
    void SetTitle(const std::string& text);
    void SetFocusVisible(bool visible);
    void SetPinVisible(bool visible);
    /// Hides the remove button and moves the pin into its place at the right edge.
    void HideRemoveButton();

    /// Remembers the column (a layout container) and, while attached, joins it.
    void AttachTo(CEGUI::Window* column);
    /// Whether the panel is meant to stand in its column; AttachTo honours it.
    void SetAttached(bool attached) { attached_ = attached; }
    bool IsAttached() const { return attached_; }

    bool IsCollapsed() const { return collapsed_; }
    void SetCollapsed(bool collapsed);
    float GetExpandedHeight() const { return expandedHeight_; }

    void SetRemoveCallback(std::function<void()> callback) { removeCallback_ = std::move(callback); }
    void SetPinCallback(std::function<void()> callback) { pinCallback_ = std::move(callback); }
    /// Collapsing scrolls this pane back to the top so the column does not hang in the void.
    void SetScrollPane(CEGUI::ScrollablePane* pane) { scrollPane_ = pane; }

    CEGUI::Window* GetWindow() const { return window_; }
    CEGUI::Window* GetHeader() const { return header_; }
    CEGUI::Window* GetClientWindow() const { return client_; }
    CEGUI::Window* GetColumn() const { return column_; }
    CEGUI::Window* GetButton(const char* name) const;

    /// Lays the column out again after a panel changed height or joined it.
    void RelayColumn() const;

private:
    bool OnHeaderClicked(const CEGUI::EventArgs& args);
    bool OnClientSized(const CEGUI::EventArgs& args);

    CEGUI::Window* window_ = nullptr;
    CEGUI::Window* header_ = nullptr;
    CEGUI::Window* client_ = nullptr;
    CEGUI::Window* column_ = nullptr;
    CEGUI::ScrollablePane* scrollPane_ = nullptr;
    bool attached_ = true;
    bool collapsed_ = false;
    float expandedHeight_ = kHeaderHeight;
    std::function<void()> removeCallback_;
    std::function<void()> pinCallback_;
};

} // namespace vexa
