#include <nubo/GuiSystem.h>

#include <nubo/ArrayPanel.h>

#include <plor/Window.h>

#include <runa/rlog.h>

// CEGUI's OpenGL 3 renderer brings GLEW; glbinding never enters this file.
#include <GL/glew.h>

#include <CEGUI/DefaultResourceProvider.h>
#include <CEGUI/Exceptions.h>
#include <CEGUI/Font.h>
#include <CEGUI/FontManager.h>
#include <CEGUI/GUIContext.h>
#include <CEGUI/ImageManager.h>
#include <CEGUI/Logger.h>
#include <CEGUI/MouseCursor.h>
#include <CEGUI/RegexMatcher.h>
#include <CEGUI/RendererModules/Null/Renderer.h>
#include <CEGUI/RendererModules/OpenGL/GL3Renderer.h>
#include <CEGUI/Scheme.h>
#include <CEGUI/SchemeManager.h>
#include <CEGUI/System.h>
#include <CEGUI/SystemKeys.h>
#include <CEGUI/Window.h>
#include <CEGUI/WindowFactoryManager.h>
#include <CEGUI/WindowManager.h>
#include <CEGUI/XMLParser.h>
#include <CEGUI/falagard/WidgetLookManager.h>
#include <CEGUI/widgets/Editbox.h>
#include <CEGUI/widgets/ItemListBase.h>
#include <CEGUI/widgets/Listbox.h>
#include <CEGUI/widgets/MultiLineEditbox.h>
#include <CEGUI/widgets/ScrollablePane.h>
#include <CEGUI/widgets/Scrollbar.h>
#include <CEGUI/widgets/Slider.h>
#include <CEGUI/widgets/Spinner.h>

#include <array>
#include <clocale>
#include <cmath>
#include <cstring>
#include <exception>
#include <filesystem>
#include <regex>
#include <utility>

namespace nubo {

namespace {

const char* const kSchemeFile = "DarkVexa.scheme";
const char* const kDefaultFont = "InriaSans-10-Normal";
const char* const kTooltipType = "DarkVexa/Tooltip";

// CEGUI is a process-wide singleton: one running GUI system at a time.
bool systemRunning = false;
std::string currentResourceDirectory;

/// Routes CEGUI's own log into rlog instead of a CEGUI.log file in the working directory.
/// Errors become warnings: the caller that sees CEGUI's exception reports the failure.
class RlogLogger : public CEGUI::Logger {
public:
    void logEvent(const CEGUI::String& message, CEGUI::LoggingLevel level) override
    {
        if (IsLocaleNotice(message) || IsBacktrace(message))
            return;
        if (level == CEGUI::Errors)
            rlog::Warn(message.c_str(), "CEGUI");
        else if (level == CEGUI::Warnings)
            rlog::Info(message.c_str(), "CEGUI");
    }
    void setLogFilename(const CEGUI::String&, bool) override {}

private:
    /// CEGUI follows every exception with a stack dump, a line per frame, at error level.
    /// The exception's own line says what went wrong; the frames only bury it.
    bool IsBacktrace(const CEGUI::String& message)
    {
        static const CEGUI::String start = "========== Start of Backtrace";
        static const CEGUI::String end = "==========  End of Backtrace";
        if (message.compare(0, start.length(), start) == 0)
            inBacktrace_ = true;
        else if (message.compare(0, end.length(), end) == 0) {
            inBacktrace_ = false;
            return true;
        }
        return inBacktrace_;
    }

    /// CEGUI complains, again and again, whenever LC_ALL is not "C", although it only parses
    /// numbers. The window system sets LC_CTYPE, so the complaint is noise unless LC_NUMERIC
    /// really differs, and then it is worth hearing once.
    bool IsLocaleNotice(const CEGUI::String& message)
    {
        static const CEGUI::String prefix = "The C locale for LC_NUMERIC";
        if (message.compare(0, prefix.length(), prefix) != 0)
            return false;
        const char* numeric = std::setlocale(LC_NUMERIC, nullptr);
        if ((numeric && std::strcmp(numeric, "C") == 0) || localeReported_)
            return true;
        localeReported_ = true;
        return false;
    }

    bool localeReported_ = false;
    bool inBacktrace_ = false;
};

/// Edit box validation (spinners restrict their text with it) over std::regex: this CEGUI
/// build has no regex library of its own, and a spinner without a validator cannot even be
/// created. std::regex cannot tell a prefix of a match, so text is either valid (the whole
/// text matches) or invalid; the spinners' patterns accept every prefix of a number anyway.
class StdRegexMatcher : public CEGUI::RegexMatcher {
public:
    void setRegexString(const CEGUI::String& regex) override
    {
        pattern_ = regex;
        try {
            regex_ = std::regex(regex.c_str(), std::regex::ECMAScript | std::regex::optimize);
            valid_ = true;
        } catch (const std::regex_error& error) {
            valid_ = false;
            rlog::Warn("Invalid validation pattern \"" + std::string(regex.c_str()) + "\" (" + error.what() +
                           "); any text is accepted",
                       "nubo::GuiSystem");
        }
    }
    const CEGUI::String& getRegexString() const override { return pattern_; }
    MatchState getMatchStateOfString(const CEGUI::String& text) const override
    {
        if (!valid_)
            return MS_VALID;
        return std::regex_match(text.c_str(), regex_) ? MS_VALID : MS_INVALID;
    }

private:
    CEGUI::String pattern_;
    std::regex regex_;
    bool valid_ = false;
};

/// Gives every new edit box (also those inside spinners and comboboxes) a validator, which
/// it keeps until its destruction starts.
bool InstallValidator(const CEGUI::EventArgs& e)
{
    auto* editbox = dynamic_cast<CEGUI::Editbox*>(static_cast<const CEGUI::WindowEventArgs&>(e).window);
    if (!editbox)
        return false;
    auto* matcher = new StdRegexMatcher;
    matcher->setRegexString(editbox->getValidationString());
    editbox->setValidator(matcher);
    editbox->subscribeEvent(CEGUI::Window::EventDestructionStarted,
                            [editbox, matcher](const CEGUI::EventArgs&) {
                                editbox->setValidator(nullptr);
                                delete matcher;
                                return false;
                            });
    return false;
}

std::string ErrorText(const std::exception& error)
{
    if (const auto* ceguiError = dynamic_cast<const CEGUI::Exception*>(&error))
        return ceguiError->getMessage().c_str();
    return error.what();
}

/// Runs `call` and turns any exception into a logged failure: CEGUI reports problems by
/// throwing, and nothing thrown may escape into the host's main loop.
template <class F>
bool Guarded(const char* label, F&& call)
{
    try {
        return call();
    } catch (const std::exception& error) {
        rlog::Fail(ErrorText(error), label);
    } catch (...) {
        rlog::Fail("Unknown exception", label);
    }
    return false;
}

std::string AsDirectory(const std::string& directory)
{
    if (directory.empty() || directory.back() == '/' || directory.back() == '\\')
        return directory;
    return directory + "/";
}

struct SystemState {
    enum class Backend { OpenGL3, Null };

    Backend backend = Backend::Null;
    std::shared_ptr<plor::Window> window;
    /// Ours only when no other CEGUI logger existed; must outlive CEGUI's System.
    std::unique_ptr<CEGUI::Logger> logger;
    CEGUI::Renderer* renderer = nullptr;
    CEGUI::GUIContext* context = nullptr;
    CEGUI::Window* root = nullptr;
};

/// Tears down whatever part of CEGUI `state` got as far as starting.
void Shutdown(SystemState& state)
{
    using Backend = SystemState::Backend;
    // No System existed before the start (CanStart), so one that exists now is ours, even
    // when the renderer pointer never came back from a start that threw half way.
    if (state.renderer || CEGUI::System::getSingletonPtr()) {
        // The GL renderer frees its textures and buffers: its context must be current.
        const bool current = !state.window || state.window->SetContextConditional();
        Guarded("nubo::GuiSystem::Terminate", [&] {
            if (CEGUI::WindowManager::getSingletonPtr())
                CEGUI::WindowManager::getSingleton().destroyAllWindows();
            if (state.backend == Backend::OpenGL3)
                CEGUI::OpenGL3Renderer::destroySystem();
            else
                CEGUI::NullRenderer::destroySystem();
            return true;
        });
        if (state.window && current)
            state.window->UnsetContextConditional();
    }
    state.renderer = nullptr;
    state.context = nullptr;
    state.root = nullptr;
    state.logger.reset();
    state.window.reset();
}

/// Resource groups, scheme, fonts and the root window, once CEGUI's System exists.
bool SetUpContext(SystemState& state, const std::string& directory, float width, float height,
                  const char* label)
{
    return Guarded(label, [&] {
        auto& system = CEGUI::System::getSingleton();
        system.notifyDisplaySizeChanged(CEGUI::Sizef(width, height));

        auto* provider = dynamic_cast<CEGUI::DefaultResourceProvider*>(system.getResourceProvider());
        if (!provider) {
            rlog::Fail("CEGUI started without its default resource provider", label);
            return false;
        }
        // One flat folder holds every kind of resource.
        for (const char* group : {"schemes", "imagesets", "fonts", "layouts", "looknfeels", "schemas"})
            provider->setResourceGroupDirectory(group, directory);
        CEGUI::Scheme::setDefaultResourceGroup("schemes");
        CEGUI::ImageManager::setImagesetDefaultResourceGroup("imagesets");
        CEGUI::Font::setDefaultResourceGroup("fonts");
        CEGUI::WidgetLookManager::setDefaultResourceGroup("looknfeels");
        CEGUI::WindowManager::setDefaultResourceGroup("layouts");
        if (CEGUI::XMLParser* parser = system.getXMLParser();
            parser && parser->isPropertyPresent("SchemaDefaultResourceGroup"))
            parser->setProperty("SchemaDefaultResourceGroup", "schemas");

        // The scheme maps its look types onto these, so they must exist first.
        RegisterWindowTypes();
        CEGUI::WindowManager::getSingleton().subscribeEvent(CEGUI::WindowManager::EventWindowCreated,
                                                            CEGUI::Event::Subscriber(&InstallValidator));
        CEGUI::SchemeManager::getSingleton().createFromFile(kSchemeFile);

        state.context = &system.getDefaultGUIContext();
        if (CEGUI::FontManager::getSingleton().isDefined(kDefaultFont))
            state.context->setDefaultFont(kDefaultFont);
        else
            rlog::Warn(std::string("The scheme defines no font \"") + kDefaultFont +
                           "\"; texts use CEGUI's first font",
                       label);
        if (CEGUI::WindowFactoryManager::getSingleton().isFalagardMappedType(kTooltipType))
            state.context->setDefaultTooltipType(kTooltipType);
        // The window system draws the cursor. The cursor's bounds were taken as fractions of
        // the display when it was created, which the null renderer does at size 0 x 0:
        // reset them to the whole display, whatever its size.
        CEGUI::MouseCursor& cursor = state.context->getMouseCursor();
        cursor.setDefaultImage(static_cast<const CEGUI::Image*>(nullptr));
        cursor.setConstraintArea(nullptr);
        cursor.setPosition(CEGUI::Vector2f(0.0f, 0.0f));

        state.root = CEGUI::WindowManager::getSingleton().createWindow("DefaultWindow", "root");
        state.root->setArea(CEGUI::URect(CEGUI::UDim(0.0f, 0.0f), CEGUI::UDim(0.0f, 0.0f),
                                         CEGUI::UDim(1.0f, 0.0f), CEGUI::UDim(1.0f, 0.0f)));
        state.context->setRootWindow(state.root);
        return true;
    });
}

/// The checks every start shares; true when starting may go ahead.
bool CanStart(bool alreadyStarted, const std::string& directory, const char* label)
{
    // Every CEGUI exception is caught and logged here; CEGUI need not print it as well.
    CEGUI::Exception::setStdErrEnabled(false);
    if (alreadyStarted) {
        rlog::Fail("This GUI system is already initialised", label);
        return false;
    }
    // Checked here because CEGUI's own exception would not say where it looked.
    const std::string schemePath = directory + kSchemeFile;
    std::error_code error;
    if (!std::filesystem::is_regular_file(schemePath, error)) {
        rlog::Fail("GUI scheme file not found: " + schemePath, label);
        return false;
    }
    if (systemRunning || CEGUI::System::getSingletonPtr()) {
        rlog::Fail("Another GUI system is running; CEGUI allows only one per process", label);
        return false;
    }
    return true;
}

} // namespace

struct GuiSystem::State : SystemState {
    /// Time not yet given to the context (see InjectTime).
    float contextTime = 0.0f;
};

GuiSystem::GuiSystem() = default;

GuiSystem::~GuiSystem()
{
    Terminate();
}

bool GuiSystem::Initialize(const std::shared_ptr<plor::Window>& window, const std::string& resourceDirectory)
{
    const char* label = "nubo::GuiSystem::Initialize";
    if (!window) {
        rlog::Fail("No window to draw the GUI in", label);
        return false;
    }
    const std::string directory = AsDirectory(resourceDirectory);
    if (!CanStart(state_ != nullptr, directory, label))
        return false;

    auto state = std::make_unique<State>();
    state->backend = State::Backend::OpenGL3;
    state->window = window;
    if (!CEGUI::Logger::getSingletonPtr())
        state->logger = std::make_unique<RlogLogger>();
    if (!window->SetContextConditional()) {
        rlog::Fail("The window's OpenGL context cannot be made current", label);
        return false;
    }
    const glm::ivec2 size = window->GetFramebufferSize();
    const bool started = Guarded(label, [&] {
        // GLEW (initialised by the renderer) must look past the extension string of a core context.
        glewExperimental = GL_TRUE;
        state->renderer = &CEGUI::OpenGL3Renderer::bootstrapSystem(
            CEGUI::Sizef(static_cast<float>(size.x), static_cast<float>(size.y)));
        return true;
    });
    if (!started ||
        !SetUpContext(*state, directory, static_cast<float>(size.x), static_cast<float>(size.y), label)) {
        Shutdown(*state);
        window->UnsetContextConditional();
        return false;
    }
    // GLEW probes with calls a core context rejects; leave no error for the next GL check
    // (bounded: a lost context reports its loss for ever).
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i) {
    }
    window->UnsetContextConditional();
    state_ = std::move(state);
    systemRunning = true;
    currentResourceDirectory = directory;
    return true;
}

bool GuiSystem::InitializeHeadless(const std::string& resourceDirectory, int width, int height)
{
    const char* label = "nubo::GuiSystem::InitializeHeadless";
    if (width <= 0 || height <= 0) {
        rlog::Fail("Invalid display size " + std::to_string(width) + "x" + std::to_string(height), label);
        return false;
    }
    const std::string directory = AsDirectory(resourceDirectory);
    if (!CanStart(state_ != nullptr, directory, label))
        return false;

    auto state = std::make_unique<State>();
    state->backend = State::Backend::Null;
    if (!CEGUI::Logger::getSingletonPtr())
        state->logger = std::make_unique<RlogLogger>();
    const bool started = Guarded(label, [&] {
        state->renderer = &CEGUI::NullRenderer::bootstrapSystem();
        return true;
    });
    if (!started ||
        !SetUpContext(*state, directory, static_cast<float>(width), static_cast<float>(height), label)) {
        Shutdown(*state);
        return false;
    }
    state_ = std::move(state);
    systemRunning = true;
    currentResourceDirectory = directory;
    return true;
}

void GuiSystem::Terminate()
{
    if (!state_)
        return;
    Shutdown(*state_);
    state_.reset();
    systemRunning = false;
    currentResourceDirectory.clear();
}

bool GuiSystem::IsInitialized() const
{
    return state_ != nullptr;
}

CEGUI::Window* GuiSystem::GetRoot() const
{
    return state_ ? state_->root : nullptr;
}

CEGUI::GUIContext* GuiSystem::GetContext() const
{
    return state_ ? state_->context : nullptr;
}

bool GuiSystem::InjectMouseMove(float x, float y)
{
    if (!state_)
        return false;
    // CEGUI would report every move as used (the root window receives it); the 3D views
    // need the moves over the background.
    return Guarded("nubo::GuiSystem::InjectMouseMove", [&] {
        state_->context->injectMousePosition(x, y);
        return IsMouseOverGui();
    });
}

bool GuiSystem::InjectMouseDown(CEGUI::MouseButton button)
{
    if (!state_)
        return false;
    return Guarded("nubo::GuiSystem::InjectMouseDown", [&] {
        const bool captured = CapturedBeforehand();
        const bool used = UsedByGui(state_->context->injectMouseButtonDown(button), captured);
        // A press in the 3D views takes the keyboard from the GUI: CEGUI would keep sending
        // keys to the last active widget (an edit box) although the user clicked elsewhere.
        if (!used && !captured) {
            CEGUI::Window* active = state_->root->getActiveChild();
            if (active && active != state_->root)
                active->deactivate();
        }
        return used;
    });
}

bool GuiSystem::InjectMouseUp(CEGUI::MouseButton button)
{
    if (!state_)
        return false;
    return Guarded("nubo::GuiSystem::InjectMouseUp", [&] {
        const bool captured = CapturedBeforehand();
        return UsedByGui(state_->context->injectMouseButtonUp(button), captured);
    });
}

bool GuiSystem::InjectMouseWheel(float delta)
{
    if (!state_ || !std::isfinite(delta))
        return false;
    // Both count one unit per notch.
    return Guarded("nubo::GuiSystem::InjectMouseWheel", [&] {
        const bool captured = CapturedBeforehand();
        if (!captured && ScrollPaneUnderMouse(delta))
            return true;
        return UsedByGui(state_->context->injectMouseWheelChange(delta), captured);
    });
}

bool GuiSystem::InjectKeyDown(CEGUI::Key::Scan key)
{
    if (!state_ || key == CEGUI::Key::Unknown)
        return false;
    return Guarded("nubo::GuiSystem::InjectKeyDown", [&] {
        CEGUI::GUIContext& context = *state_->context;
        const bool handled = context.injectKeyDown(key);
        // The text-field shortcuts every user expects, which CEGUI leaves to its host.
        if (!context.getSystemKeys().isPressed(CEGUI::SystemKeys::Control))
            return handled;
        switch (key) {
        case CEGUI::Key::A:
            if (CEGUI::Window* active = state_->root->getActiveChild()) {
                if (auto* editbox = dynamic_cast<CEGUI::Editbox*>(active)) {
                    editbox->setSelection(0, editbox->getText().length());
                    return true;
                }
                if (auto* multiLine = dynamic_cast<CEGUI::MultiLineEditbox*>(active)) {
                    multiLine->setSelection(0, multiLine->getText().length());
                    return true;
                }
            }
            return handled;
        case CEGUI::Key::C:
            return context.injectCopyRequest() || handled;
        case CEGUI::Key::X:
            return context.injectCutRequest() || handled;
        case CEGUI::Key::V:
            return context.injectPasteRequest() || handled;
        default:
            return handled;
        }
    });
}

bool GuiSystem::InjectKeyUp(CEGUI::Key::Scan key)
{
    if (!state_ || key == CEGUI::Key::Unknown)
        return false;
    return Guarded("nubo::GuiSystem::InjectKeyUp", [&] { return state_->context->injectKeyUp(key); });
}

bool GuiSystem::IsTypingText() const
{
    if (!state_)
        return false;
    const CEGUI::Window* active = state_->root->getActiveChild();
    if (active == nullptr || active == state_->root)
        return false;
    if (const auto* editbox = dynamic_cast<const CEGUI::Editbox*>(active))
        return !editbox->isReadOnly();
    if (const auto* multiLine = dynamic_cast<const CEGUI::MultiLineEditbox*>(active))
        return !multiLine->isReadOnly();
    return false;
}

bool GuiSystem::InjectChar(unsigned int codepoint)
{
    if (!state_)
        return false;
    return Guarded("nubo::GuiSystem::InjectChar", [&] {
        return state_->context->injectChar(static_cast<CEGUI::String::value_type>(codepoint));
    });
}

bool GuiSystem::ScrollPaneUnderMouse(float delta)
{
    // CEGUI hands the wheel to the innermost window under the pointer, and a label or a panel
    // header drops it: over a column of panels the wheel did nothing. Widgets that use the
    // wheel themselves keep it; otherwise the nearest scrollable pane around the pointer
    // scrolls, as it does in any other toolkit.
    for (CEGUI::Window* w = state_->context->getWindowContainingMouse(); w != nullptr; w = w->getParent()) {
        if (dynamic_cast<CEGUI::Slider*>(w) || dynamic_cast<CEGUI::Spinner*>(w) ||
            dynamic_cast<CEGUI::Scrollbar*>(w) || dynamic_cast<CEGUI::Listbox*>(w) ||
            dynamic_cast<CEGUI::ItemListBase*>(w) || dynamic_cast<CEGUI::MultiLineEditbox*>(w))
            return false;
        if (auto* pane = dynamic_cast<CEGUI::ScrollablePane*>(w)) {
            CEGUI::Scrollbar* bar = pane->getVertScrollbar();
            if (bar->getDocumentSize() <= bar->getPageSize())
                return false;
            bar->setScrollPosition(bar->getScrollPosition() - bar->getStepSize() * delta);
            return true;
        }
    }
    return false;
}

bool GuiSystem::CapturedBeforehand() const
{
    return state_->context->getInputCaptureWindow() != nullptr;
}

bool GuiSystem::UsedByGui(bool handled, bool captured) const
{
    // The root window takes every button and wheel event CEGUI sees; only those that reach a
    // real GUI window, or one that holds the input (a drag, an open drop-down list), count.
    return handled && (captured || IsMouseOverGui());
}

bool GuiSystem::IsMouseOverGui() const
{
    if (!state_)
        return false;
    const CEGUI::Window* over = state_->context->getWindowContainingMouse();
    return over && over != state_->root;
}

void GuiSystem::InjectTime(float seconds)
{
    if (!state_ || !std::isfinite(seconds) || seconds < 0.0f)
        return;
    Guarded("nubo::GuiSystem::InjectTime", [&] {
        // The system drives animations, every step. The context drives tooltips, the caret and
        // button auto-repeat by walking every window, ten times the cost of polling the
        // window's events; those timers need no finer steps than a frame at 60 Hz, so a host
        // that steps the library in a tight loop hands the context its time in such frames.
        constexpr float kContextStep = 1.0f / 60.0f;
        CEGUI::System::getSingleton().injectTimePulse(seconds);
        state_->contextTime += seconds;
        if (state_->contextTime >= kContextStep) {
            state_->context->injectTimePulse(state_->contextTime);
            state_->contextTime = 0.0f;
        }
        return true;
    });
}

void GuiSystem::NotifyDisplaySizeChanged(int width, int height)
{
    // An iconified window reports 0 x 0; the GUI keeps its last size until it comes back.
    if (!state_ || width <= 0 || height <= 0)
        return;
    Guarded("nubo::GuiSystem::NotifyDisplaySizeChanged", [&] {
        CEGUI::System::getSingleton().notifyDisplaySizeChanged(
            CEGUI::Sizef(static_cast<float>(width), static_cast<float>(height)));
        return true;
    });
}

bool GuiSystem::IsDirty() const
{
    return state_ && state_->context->isDirty();
}

void GuiSystem::MarkDirty()
{
    if (state_)
        state_->context->markAsDirty();
}

void GuiSystem::Draw()
{
    if (!state_)
        return;
    State& state = *state_;
    const bool current = !state.window || state.window->SetContextConditional();
    if (!current) {
        rlog::Fail("The window's OpenGL context cannot be made current", "nubo::GuiSystem::Draw");
        return;
    }
    // CEGUI's renderer restores the enable flags it found (blend, scissor, depth, culling) and
    // unbinds its program, but leaves its own vertex array, array buffer and texture bound and
    // its blend function and scissor box set: GL code after this binds what it uses.
    Guarded("nubo::GuiSystem::Draw", [&] {
        state.renderer->beginRendering();
        try {
            state.context->draw();
        } catch (...) {
            state.renderer->endRendering();
            throw;
        }
        state.renderer->endRendering();
        CEGUI::WindowManager::getSingleton().cleanDeadPool();
        return true;
    });
    if (state.window)
        state.window->UnsetContextConditional();
}

const std::string& GetResourceDirectory()
{
    return currentResourceDirectory;
}

} // namespace nubo
