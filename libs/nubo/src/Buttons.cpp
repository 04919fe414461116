#include <nubo/Buttons.h>

namespace nubo {

const CEGUI::String PushButton::WidgetTypeName("nubo/PushButton");
const CEGUI::String ToggleButton::WidgetTypeName("nubo/ToggleButton");

} // namespace nubo
