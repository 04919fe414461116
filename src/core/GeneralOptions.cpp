#include "core/GeneralOptions.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr const char* kReadLabel = "vexa::GeneralOptions::ReadPayload";
const tesk::Color3b kWhite{255, 255, 255};

/// Booleans are written as 0 or 1; any other byte means the file is not ours.
bool ReadFlag(runa::BinaryReader& reader, bool& value)
{
    std::uint8_t byte = 0;
    if (!reader.Read(byte) || byte > 1)
        return false;
    value = byte != 0;
    return true;
}

} // namespace

void GeneralOptions::SetAntiAliasing(int method)
{
    if (method < 0 || method >= kAntiAliasingMethodCount) {
        rlog::Warn("Unknown anti-aliasing method " + std::to_string(method) + "; keeping " +
                       std::to_string(antiAliasing_),
                   "vexa::GeneralOptions::SetAntiAliasing");
        return;
    }
    if (antiAliasing_ != method) {
        antiAliasing_ = static_cast<std::uint8_t>(method);
        SetDirty();
    }
    ApplyAntiAliasing();
}

void GeneralOptions::SetWhiteBackground(bool white)
{
    if (whiteBackground_ == white)
        return;
    whiteBackground_ = white;
    SetDirty();
    ApplyBackground();
}

tesk::Color3b GeneralOptions::GetDisplayedBackgroundColor() const
{
    return whiteBackground_ ? kWhite : backgroundColor_;
}

void GeneralOptions::SetBackgroundColor(const tesk::Color3b& color)
{
    backgroundColor_ = color;
    if (!whiteBackground_)
        ApplyBackground();
}

void GeneralOptions::SetStoredSensitivity(float stored)
{
    if (!std::isfinite(stored)) {
        rlog::Warn("Mouse sensitivity must be a finite number", "vexa::GeneralOptions::SetStoredSensitivity");
        return;
    }
    stored = std::clamp(stored, 0.0f, 1.0f);
    if (storedSensitivity_ != stored) {
        storedSensitivity_ = stored;
        SetDirty();
    }
    ApplySensitivity();
}

void GeneralOptions::SetOptimizedRendering(bool optimized)
{
    if (optimizedRendering_ != optimized) {
        optimizedRendering_ = optimized;
        SetDirty();
    }
}

void GeneralOptions::SetShortcutsEnabled(bool enabled)
{
    if (shortcutsEnabled_ != enabled) {
        shortcutsEnabled_ = enabled;
        SetDirty();
    }
}

void GeneralOptions::SetViewLayout(std::uint8_t layout)
{
    if (layout >= kViewLayoutCount) {
        rlog::Warn("Unknown view layout " + std::to_string(layout) + "; keeping " +
                       std::to_string(viewLayout_),
                   "vexa::GeneralOptions::SetViewLayout");
        return;
    }
    if (viewLayout_ != layout) {
        viewLayout_ = layout;
        SetDirty();
    }
}

void GeneralOptions::ApplyAll() const
{
    ApplyAntiAliasing();
    ApplyBackground();
    ApplySensitivity();
}

bool GeneralOptions::ReadPayload(std::istream& in)
{
    runa::BinaryReader reader(in, kReadLabel);
    std::uint8_t antiAliasing = 0;
    bool whiteBackground = false;
    float storedSensitivity = 0.0f;
    bool optimizedRendering = false;
    bool shortcutsEnabled = false;
    std::uint8_t viewLayout = 0;
    if (!reader.Read(antiAliasing) || !ReadFlag(reader, whiteBackground) || !reader.Read(storedSensitivity) ||
        !ReadFlag(reader, optimizedRendering) || !ReadFlag(reader, shortcutsEnabled) ||
        !reader.Read(viewLayout))
        return false;
    // Everything is checked before anything is taken, so a damaged file changes nothing.
    if (antiAliasing >= kAntiAliasingMethodCount || viewLayout >= kViewLayoutCount ||
        !std::isfinite(storedSensitivity) || storedSensitivity < 0.0f || storedSensitivity > 1.0f)
        return false;

    // The anti-aliasing method and the sensitivity always count as changed, so a file that
    // was read is written back once; the switches only when they differ. The layout is a
    // start-up choice and leaves the flag alone.
    antiAliasing_ = antiAliasing;
    SetDirty();
    ApplyAntiAliasing();

    if (whiteBackground_ != whiteBackground) {
        whiteBackground_ = whiteBackground;
        SetDirty();
    }
    ApplyBackground();

    storedSensitivity_ = storedSensitivity;
    SetDirty();
    ApplySensitivity();

    if (optimizedRendering_ != optimizedRendering) {
        optimizedRendering_ = optimizedRendering;
        SetDirty();
    }
    if (shortcutsEnabled_ != shortcutsEnabled) {
        shortcutsEnabled_ = shortcutsEnabled;
        SetDirty();
    }
    viewLayout_ = viewLayout;
    return true;
}

void GeneralOptions::WritePayload(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.Write(antiAliasing_).Write(whiteBackground_).Write(storedSensitivity_);
    writer.Write(optimizedRendering_).Write(shortcutsEnabled_).Write(viewLayout_);
}

void GeneralOptions::ApplyBackground() const
{
    if (hooks_.setBackground)
        hooks_.setBackground(GetDisplayedBackgroundColor());
}

void GeneralOptions::ApplySensitivity() const
{
    if (hooks_.setSensitivity)
        hooks_.setSensitivity(GetSensitivity());
}

void GeneralOptions::ApplyAntiAliasing() const
{
    if (hooks_.setAntiAliasing)
        hooks_.setAntiAliasing(antiAliasing_);
}

} // namespace vexa
