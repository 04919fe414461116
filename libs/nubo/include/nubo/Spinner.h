#pragma once
// A numeric spinner whose field can be typed into. CEGUI's own spinner turns every keystroke
// into its value and writes the clamped value straight back into the field: clearing "3" to
// type "9" turns the empty field into the minimum "1" in front of the caret, and the "9" then
// makes "91". Here the field keeps what the user types while it has the keyboard (the value
// still follows, clamped to the range, so the picture updates as one types); when editing
// ends (Enter, Tab, or the field losing the keyboard), the field shows the value it became.

#include <CEGUI/widgets/Spinner.h>

namespace nubo {

class Spinner : public CEGUI::Spinner {
public:
    static const CEGUI::String WidgetTypeName; ///< "nubo/Spinner"

    Spinner(const CEGUI::String& type, const CEGUI::String& name);

    void initialiseComponents() override;

protected:
    void onValueChanged(CEGUI::WindowEventArgs& e) override;

private:
    /// The field shows the spinner's value again.
    bool ShowValue(const CEGUI::EventArgs& e);
};

} // namespace nubo
