#include <vexa/gui/HostedWindow.h>

#include <CEGUI/Window.h>

namespace vexa::gui {

HostedWindow::HostedWindow(CEGUI::Window* row, CEGUI::Window* window) : TElement(row), window_(window) {}
HostedWindow::HostedWindow(const HostedWindow& other) = default;
HostedWindow::HostedWindow(HostedWindow&& other) noexcept = default;
HostedWindow::~HostedWindow() = default;

} // namespace vexa::gui
