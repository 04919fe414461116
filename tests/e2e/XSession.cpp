#include "XSession.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cmath>
#include <stdexcept>
#include <thread>

namespace e2e {

namespace {

using namespace std::chrono_literals;

// Between two injected events. GLFW reads the pointer position from every motion event, so
// none is lost; the pause only keeps a press and the motion after it from sharing one poll.
constexpr auto kEventGap = 12ms;

// A window that disappears while we look at it (the program closing) is not a test failure
// of the driver; the caller notices through the results.
int IgnoreXErrors(Display*, XErrorEvent*)
{
    return 0;
}

// `timeout` for each character; a display number has a few.
std::string ReadLine(int fd, std::chrono::milliseconds timeout)
{
    std::string line;
    pollfd descriptor{fd, POLLIN, 0};
    char c = 0;
    while (poll(&descriptor, 1, static_cast<int>(timeout.count())) > 0 && read(fd, &c, 1) == 1 && c != '\n')
        line.push_back(c);
    return line;
}

unsigned long ReadCardinal(Display* display, Window window, Atom property)
{
    Atom type = None;
    int format = 0;
    unsigned long items = 0, after = 0, value = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display, window, property, 0, 1, False, XA_CARDINAL, &type, &format, &items,
                           &after, &data) == Success &&
        data != nullptr) {
        if (format == 32 && items == 1)
            value = *reinterpret_cast<unsigned long*>(data);
        XFree(data);
    }
    return value;
}

} // namespace

XSession::XSession(const std::string& serverLog)
{
    int pipeFds[2];
    if (pipe2(pipeFds, O_CLOEXEC) != 0)
        throw std::runtime_error("cannot create a pipe for Xvfb");

    // No display number: Xvfb takes the first free one and writes it to the descriptor.
    server_ = std::make_unique<ChildProcess>(
        ChildProcess::Options{.program = "/usr/bin/Xvfb",
                              .arguments = {"-displayfd", std::to_string(pipeFds[1]), "-screen", "0",
                                            "1280x900x24", "-nolisten", "tcp", "-noreset"},
                              .outputFile = serverLog,
                              .inheritedDescriptor = pipeFds[1]});
    close(pipeFds[1]);
    const std::string number = ReadLine(pipeFds[0], 30s);
    close(pipeFds[0]);
    if (number.empty())
        throw std::runtime_error("Xvfb did not report a display number (see " + serverLog + ")");
    displayName_ = ":" + number;

    XSetErrorHandler(IgnoreXErrors);
    display_ = XOpenDisplay(displayName_.c_str());
    if (display_ == nullptr)
        throw std::runtime_error("cannot connect to " + displayName_);
    int event = 0, error = 0, major = 0, minor = 0;
    if (!XTestQueryExtension(display_, &event, &error, &major, &minor))
        throw std::runtime_error("the X server has no XTEST extension");
    // Our requests must go through even while the program holds a server grab.
    XTestGrabControl(display_, True);
}

XSession::~XSession()
{
    if (display_ != nullptr)
        XCloseDisplay(display_);
    if (server_)
        server_->Stop(2000ms);
}

void XSession::Pause(std::chrono::milliseconds duration)
{
    std::this_thread::sleep_for(duration);
}

void XSession::Flush()
{
    XSync(display_, False);
    Pause(kEventGap);
}

bool XSession::AttachToWindowOf(pid_t pid, std::chrono::milliseconds timeout)
{
    const Atom pidAtom = XInternAtom(display_, "_NET_WM_PID", False);
    window_ = 0;
    const auto end = std::chrono::steady_clock::now() + timeout;
    for (; window_ == 0 && std::chrono::steady_clock::now() < end; Pause(50ms)) {
        Window root = 0, parent = 0, *children = nullptr;
        unsigned int count = 0;
        XQueryTree(display_, DefaultRootWindow(display_), &root, &parent, &children, &count);
        for (unsigned int i = 0; i < count && window_ == 0; ++i) {
            XWindowAttributes attributes;
            if (XGetWindowAttributes(display_, children[i], &attributes) != 0 &&
                attributes.map_state == IsViewable && attributes.c_class == InputOutput &&
                ReadCardinal(display_, children[i], pidAtom) == static_cast<unsigned long>(pid))
                window_ = children[i];
        }
        if (children != nullptr)
            XFree(children);
    }
    Window child = 0;
    return window_ != 0 && XTranslateCoordinates(display_, window_, DefaultRootWindow(display_), 0, 0,
                                                 &originX_, &originY_, &child);
}

Rect XSession::WindowArea()
{
    XWindowAttributes attributes;
    if (window_ == 0 || XGetWindowAttributes(display_, window_, &attributes) == 0)
        return {};
    return {originX_, originY_, originX_ + attributes.width, originY_ + attributes.height};
}

Picture XSession::Grab()
{
    XWindowAttributes attributes;
    if (window_ == 0 || XGetWindowAttributes(display_, window_, &attributes) == 0 ||
        attributes.map_state != IsViewable)
        return {};
    XImage* image = XGetImage(display_, window_, 0, 0, static_cast<unsigned int>(attributes.width),
                              static_cast<unsigned int>(attributes.height), AllPlanes, ZPixmap);
    if (image == nullptr)
        return {};
    // The servers the cases start (depth 24) hand out BGRX words, least significant byte first.
    if (image->bits_per_pixel != 32 || image->byte_order != LSBFirst || image->red_mask != 0xff0000 ||
        image->blue_mask != 0xff) {
        XDestroyImage(image);
        throw std::runtime_error("the X server's image format is not 32-bit BGRX");
    }
    Picture picture(image->width, image->height);
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x) {
            const auto* p =
                reinterpret_cast<const unsigned char*>(image->data + y * image->bytes_per_line + x * 4);
            picture.Set(x, y, {p[2], p[1], p[0]});
        }
    XDestroyImage(image);
    return picture;
}

void XSession::MoveOnScreen(int x, int y)
{
    XTestFakeMotionEvent(display_, DefaultScreen(display_), x, y, CurrentTime);
    Flush();
}

void XSession::MoveTo(int x, int y)
{
    MoveOnScreen(originX_ + x, originY_ + y);
}

void XSession::Press(Button button)
{
    XTestFakeButtonEvent(display_, static_cast<unsigned int>(button), True, CurrentTime);
    Flush();
}

void XSession::Release(Button button)
{
    XTestFakeButtonEvent(display_, static_cast<unsigned int>(button), False, CurrentTime);
    Flush();
}

void XSession::Click(Button button, int x, int y)
{
    MoveTo(x, y);
    Press(button);
    Pause(40ms);
    Release(button);
}

void XSession::DoubleClick(Button button, int x, int y)
{
    MoveTo(x, y);
    for (int i = 0; i < 2; ++i) {
        Press(button);
        Pause(30ms);
        Release(button);
        Pause(60ms);
    }
}

void XSession::Drag(Button button, Point from, Point to, const std::vector<std::string>& modifiers, int steps)
{
    MoveTo(static_cast<int>(std::lround(from.x)), static_cast<int>(std::lround(from.y)));
    for (const std::string& key : modifiers)
        KeyDown(key);
    Press(button);
    for (int i = 1; i <= steps; ++i) {
        const double t = static_cast<double>(i) / steps;
        MoveOnScreen(originX_ + static_cast<int>(std::lround(from.x + (to.x - from.x) * t)),
                     originY_ + static_cast<int>(std::lround(from.y + (to.y - from.y) * t)));
    }
    Release(button);
    for (auto it = modifiers.rbegin(); it != modifiers.rend(); ++it)
        KeyUp(*it);
}

void XSession::Wheel(int clicks)
{
    const Button button = clicks > 0 ? Button::WheelUp : Button::WheelDown;
    for (int i = 0; i < std::abs(clicks); ++i) {
        Press(button);
        Release(button);
    }
}

unsigned int XSession::Keycode(const std::string& keysym)
{
    const KeySym symbol = XStringToKeysym(keysym.c_str());
    if (symbol == NoSymbol)
        throw std::invalid_argument("unknown keysym " + keysym);
    const KeyCode code = XKeysymToKeycode(display_, symbol);
    if (code == 0)
        throw std::invalid_argument("no key for keysym " + keysym);
    return code;
}

void XSession::KeyDown(const std::string& keysym)
{
    XTestFakeKeyEvent(display_, Keycode(keysym), True, CurrentTime);
    Flush();
}

void XSession::KeyUp(const std::string& keysym)
{
    XTestFakeKeyEvent(display_, Keycode(keysym), False, CurrentTime);
    Flush();
}

void XSession::Tap(const std::string& keysym)
{
    KeyDown(keysym);
    Pause(30ms);
    KeyUp(keysym);
}

bool XSession::RepeatsWhenHeld(const std::string& keysym)
{
    const unsigned int code = Keycode(keysym);
    XKeyboardState state;
    XGetKeyboardControl(display_, &state);
    return state.global_auto_repeat == AutoRepeatModeOn &&
           (state.auto_repeats[code / 8] & (1u << (code % 8))) != 0;
}

void XSession::RequestClose()
{
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window_;
    event.xclient.message_type = XInternAtom(display_, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display_, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(display_, window_, False, NoEventMask, &event);
    Flush();
}

} // namespace e2e
