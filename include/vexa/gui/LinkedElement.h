#pragma once
// An element with a value that can mirror it into a variable of the caller (its link).

#include <vexa/Export.h>
#include <vexa/gui/TElement.h>

namespace vexa::gui {

template <typename V, typename T>
class VEXA_API LinkedElement : public TElement<T> {
public:
    /// Mirrors the value into `*variable` from now on; a non-null variable's current value is
    /// shown at once. Null unlinks and leaves the widget as it is.
    T* SetLink(V* variable)
    {
        link_ = variable;
        if (link_ != nullptr)
            Set(*link_);
        return this->Self();
    }

    virtual T* Set(V value) = 0;
    virtual V Get() const = 0;

protected:
    explicit LinkedElement(const CEGUI::Window* widget) : TElement<T>(widget) {}
    LinkedElement(const LinkedElement& other) = default;
    LinkedElement(LinkedElement&& other) noexcept = default;

    /// Writes the widget's value into the link first, so that callbacks see it there.
    void NotifyChange() const override
    {
        if (link_ != nullptr)
            *link_ = Get();
        TElement<T>::NotifyChange();
    }

private:
    V* link_ = nullptr;
};

} // namespace vexa::gui
