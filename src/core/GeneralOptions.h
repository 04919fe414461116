#pragma once
// The library-wide switches of the global options panel, kept in options.bin (format
// version 2) as
//
//   u8 anti-aliasing method   u8 white background   f32 mouse sensitivity (slider value)
//   u8 optimised rendering    u8 enable shortcuts    u8 view layout (0..4)
//
// The options know nothing of the engine: what a value does (the render system's
// anti-aliasing and background, the camera controller's sensitivity) reaches it through
// hooks that the engine connects. Setters apply through the same hooks, so the panel and the
// file take one path.

#include "core/FileStorage.h"

#include <tesk/Color.h>

#include <cstdint>
#include <functional>

namespace vexa {

class GeneralOptions : public FileStorage {
public:
    static constexpr const char* kFileName = "options.bin";
    static constexpr std::uint32_t kFormatVersion = 2;

    /// The render system's anti-aliasing methods are 0 (off) to 5 (FXAA), MSAA 4x is 2.
    static constexpr int kAntiAliasingMethodCount = 6;
    static constexpr int kDefaultAntiAliasing = 2;
    /// 0: the look's own view areas; 1..4: "Single View", "Dual Split", "B Split", "Quad Split".
    static constexpr std::uint8_t kViewLayoutCount = 5;

    /// The panel's slider spans 0..1 and maps onto camera sensitivities 0.2..1.8; the scale is
    /// the float just below 1.6, so that a stored value round-trips through the slider.
    static constexpr float kSensitivityScale = 1.5999999f;
    static constexpr float kSensitivityOffset = 0.2f;
    static float ToSensitivity(float stored) { return stored * kSensitivityScale + kSensitivityOffset; }
    static float ToStoredSensitivity(float sensitivity)
    {
        return (sensitivity - kSensitivityOffset) / kSensitivityScale;
    }

    /// Where the values take effect. Any of them may be left empty.
    struct Hooks {
        std::function<void(int method)> setAntiAliasing;
        std::function<void(const tesk::Color3b& color)> setBackground;
        /// Receives the camera sensitivity (0.2..1.8), not the stored slider value.
        std::function<void(float sensitivity)> setSensitivity;
    };

    GeneralOptions() = default;

    void SetHooks(Hooks hooks) { hooks_ = std::move(hooks); }

    int GetAntiAliasing() const { return antiAliasing_; }
    /// Methods outside 0..5 are refused with a warning.
    void SetAntiAliasing(int method);

    bool IsWhiteBackground() const { return whiteBackground_; }
    void SetWhiteBackground(bool white);
    /// The options' own background colour (default 3D3D3D), also while white is shown.
    const tesk::Color3b& GetBackgroundColor() const { return backgroundColor_; }
    /// The colour on screen: white when the white background is on.
    tesk::Color3b GetDisplayedBackgroundColor() const;
    /// Comes from the look at start-up; not part of options.bin, so it does not dirty.
    void SetBackgroundColor(const tesk::Color3b& color);

    /// The slider value 0..1 that options.bin stores.
    float GetStoredSensitivity() const { return storedSensitivity_; }
    /// The camera sensitivity 0.2..1.8 it stands for.
    float GetSensitivity() const { return ToSensitivity(storedSensitivity_); }
    /// Clamped to 0..1; a value that is not finite is refused with a warning.
    void SetStoredSensitivity(float stored);

    bool IsOptimizedRendering() const { return optimizedRendering_; }
    void SetOptimizedRendering(bool optimized);
    bool IsShortcutsEnabled() const { return shortcutsEnabled_; }
    void SetShortcutsEnabled(bool enabled);

    std::uint8_t GetViewLayout() const { return viewLayout_; }
    /// Layouts outside 0..4 are refused with a warning.
    void SetViewLayout(std::uint8_t layout);

    /// Applies the anti-aliasing, background and sensitivity through the hooks, e.g. once
    /// the engine has connected them.
    void ApplyAll() const;

    bool ReadPayload(std::istream& in) override;
    void WritePayload(std::ostream& out) const override;
    std::string GetFileName() const override { return kFileName; }
    std::uint32_t GetFormatVersion() const override { return kFormatVersion; }

private:
    void ApplyBackground() const;
    void ApplySensitivity() const;
    void ApplyAntiAliasing() const;

    Hooks hooks_;
    std::uint8_t antiAliasing_ = kDefaultAntiAliasing;
    bool whiteBackground_ = false;
    tesk::Color3b backgroundColor_{0x3D, 0x3D, 0x3D};
    float storedSensitivity_ = ToStoredSensitivity(1.0f);
    bool optimizedRendering_ = true;
    bool shortcutsEnabled_ = true;
    std::uint8_t viewLayout_ = 0;
};

} // namespace vexa
