#include "core/Notice.h"

#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>

#include <algorithm>

namespace vexa {

namespace {

constexpr const char* kNoticeName = "vexa_notice";
constexpr const char* kFont = "InriaSans-12-Normal";
// Fully opaque until this many seconds are left, then fading out.
constexpr float kFadeSeconds = 2.5f;
constexpr float kMinWidth = 600.0f;
constexpr float kPadding = 24.0f;
constexpr float kHeight = 30.0f;
constexpr float kBottomGap = 34.0f;

// CEGUI reads "[" as the start of a formatting tag; a name with brackets must print as it is.
CEGUI::String Escaped(const std::string& text)
{
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        if (c == '[')
            escaped += '\\';
        escaped += c;
    }
    return CEGUI::String(escaped);
}

float Alpha(float countdown)
{
    return std::clamp(countdown / kFadeSeconds, 0.0f, 1.0f);
}

} // namespace

Notice::~Notice()
{
    if (window_ != nullptr && CEGUI::WindowManager::getSingletonPtr() != nullptr)
        CEGUI::WindowManager::getSingleton().destroyWindow(window_);
}

void Notice::Show(CEGUI::Window* root, const std::string& text, float seconds)
{
    countdown_ = std::max(seconds, 0.0f);
    if (root == nullptr)
        return;
    try {
        if (window_ == nullptr) {
            window_ = CEGUI::WindowManager::getSingleton().createWindow("DarkVexa/Label", kNoticeName);
            window_->setProperty("BackgroundVisible", "true");
            window_->setProperty("BackgroundColour", "E01F1F1F");
            window_->setFont(kFont);
            window_->setAlwaysOnTop(true);
            window_->setMousePassThroughEnabled(true);
        }
        if (window_->getParent() != root) {
            if (window_->getParent() != nullptr)
                window_->getParent()->removeChild(window_);
            root->addChild(window_);
        }
        // Wide enough for the whole line (a pick report can be long), never wider than the
        // window: CEGUI clips what does not fit.
        float width = kMinWidth;
        if (const CEGUI::Font* font = window_->getFont())
            width = std::max(width, font->getTextExtent(CEGUI::String(text)) + 2.0f * kPadding);
        window_->setArea(CEGUI::URect(CEGUI::UDim(0.5f, -width / 2.0f),
                                      CEGUI::UDim(1.0f, -kBottomGap - kHeight),
                                      CEGUI::UDim(0.5f, width / 2.0f), CEGUI::UDim(1.0f, -kBottomGap)));
        window_->setMaxSize(CEGUI::USize(CEGUI::UDim(1.0f, 0.0f), CEGUI::UDim(1.0f, 0.0f)));
        window_->setText(Escaped(text));
        window_->setAlpha(Alpha(countdown_));
        window_->show();
        window_->moveToFront();
    } catch (const CEGUI::Exception& e) {
        rlog::Warn(std::string("The notice could not be shown: ") + e.what(), "vexa::Notice::Show");
    }
}

bool Notice::Advance(float dt)
{
    if (countdown_ <= 0.0f)
        return false;
    countdown_ -= dt;
    if (countdown_ <= 0.0f) {
        countdown_ = 0.0f;
        if (window_ != nullptr)
            window_->hide();
        return true;
    }
    if (window_ == nullptr)
        return false;
    const float alpha = Alpha(countdown_);
    if (alpha == window_->getAlpha())
        return false;
    window_->setAlpha(alpha);
    return true;
}

} // namespace vexa
