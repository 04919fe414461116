// The window manager follows a plor window; without the graphics libraries there is none.
#if __has_include(<plor/Window.h>)

#include "core/WindowManager.h"

#include <runa/BinaryStream.h>

namespace vexa {

namespace {

constexpr const char* kReadLabel = "vexa::WindowManager::ReadPayload";

bool IsUsableExtent(int extent)
{
    return extent > 0 && extent <= WindowManager::kMaxWindowExtent;
}

} // namespace

void WindowManager::CopyPlacementFromParams()
{
    placement_.x = windowParams_.positionX;
    placement_.y = windowParams_.positionY;
    placement_.width = windowParams_.width;
    placement_.height = windowParams_.height;
    placement_.maximized = windowParams_.maximized;
}

void WindowManager::OnWindowMoved(int x, int y)
{
    // The event's coordinates can lag behind when several moves queue up; the window knows
    // where it is now.
    if (window_) {
        const glm::ivec2 position = window_->GetPosition();
        placement_.x = position.x;
        placement_.y = position.y;
    } else {
        placement_.x = x;
        placement_.y = y;
    }
    SetDirty();
}

void WindowManager::OnWindowResized(int width, int height)
{
    if (window_) {
        placement_.maximized = window_->IsMaximized();
        // The window size, not the framebuffer's: that is what the window is created with.
        const glm::ivec2 size = window_->GetWindowSize();
        width = size.x;
        height = size.y;
    }
    // Some window systems report 0 x 0 while iconified; remembering that would make the next
    // start reject the file and forget the real size.
    if (IsUsableExtent(width) && IsUsableExtent(height)) {
        placement_.width = width;
        placement_.height = height;
    }
    SetDirty();
}

bool WindowManager::ReadPayload(std::istream& in)
{
    runa::BinaryReader reader(in, kReadLabel);
    Placement read;
    std::uint8_t maximized = 0;
    std::uint8_t padding[3] = {};
    if (!reader.Read(read.x) || !reader.Read(read.y) || !reader.Read(read.width) ||
        !reader.Read(read.height) || !reader.Read(maximized) || !reader.ReadBytes(padding, sizeof(padding)))
        return false;
    // A zero (or nonsensical) size would open an unusable window: the file is not taken.
    if (!IsUsableExtent(read.width) || !IsUsableExtent(read.height) || maximized > 1)
        return false;
    read.maximized = maximized != 0;

    placement_ = read;
    windowParams_.width = read.width;
    windowParams_.height = read.height;
    windowParams_.maximized = read.maximized;
    windowParams_.positionX = read.x;
    windowParams_.positionY = read.y;
    windowParams_.positionSet = true;
    return true;
}

void WindowManager::WritePayload(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    const std::uint8_t padding[3] = {};
    writer.Write(placement_.x).Write(placement_.y).Write(placement_.width).Write(placement_.height);
    writer.Write(placement_.maximized);
    writer.WriteBytes(padding, sizeof(padding));
}

} // namespace vexa

#endif
