#pragma once
// Remembers where the viewer's window was between runs. It follows the window's moves and
// resizes as an observer of its window events and keeps the placement in window.bin:
//
//   offset 0  i32 x        offset 8  i32 width     offset 16  u8 maximised (0 or 1)
//   offset 4  i32 y        offset 12 i32 height    offset 17  3 zero bytes
//
// after the format version word. Changes only set the dirty flag; the engine writes the file
// at the start of the next update step, so dragging the window does not hit the disk per event.

#include "core/FileStorage.h"

#include <plor/Window.h>
#include <plor/WindowEventObserver.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vexa {

class WindowManager : public plor::WindowEventObserver, public FileStorage {
public:
    static constexpr const char* kFileName = "window.bin";
    /// The first (and so far only) layout of the placement record.
    static constexpr std::uint32_t kFormatVersion = 1;
    static constexpr std::size_t kPayloadSize = 20;
    /// Larger sizes are not a real window but a damaged file.
    static constexpr int kMaxWindowExtent = 1 << 16;

    struct Placement {
        int x = 100;
        int y = 100;
        int width = 1600;
        int height = 700;
        bool maximized = false;

        bool operator==(const Placement&) const = default;
    };

    WindowManager() = default;

    const Placement& GetPlacement() const { return placement_; }

    /// What the window is created from. Start-up fills it from the look, then Load may
    /// override size, position and the maximised flag.
    plor::WindowParams& GetWindowParams() { return windowParams_; }
    const plor::WindowParams& GetWindowParams() const { return windowParams_; }
    /// Makes the window parameters the remembered placement, once the look and window.bin
    /// have had their say, so that saving before any move writes what is on screen.
    void CopyPlacementFromParams();

    /// The window whose position and state the move and resize events are read from.
    void SetWindow(std::shared_ptr<plor::Window> window) { window_ = std::move(window); }
    const std::shared_ptr<plor::Window>& GetWindow() const { return window_; }

    void OnWindowMoved(int x, int y) override;
    void OnWindowResized(int width, int height) override;

    bool ReadPayload(std::istream& in) override;
    void WritePayload(std::ostream& out) const override;
    std::string GetFileName() const override { return kFileName; }
    std::uint32_t GetFormatVersion() const override { return kFormatVersion; }

private:
    Placement placement_;
    plor::WindowParams windowParams_;
    std::shared_ptr<plor::Window> window_;
};

} // namespace vexa
