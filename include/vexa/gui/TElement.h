#pragma once
// The element base that knows its concrete class T: change callbacks that receive a T, and
// setters that return T* so that calls chain (gen.AddCheckbox("Axes")->SetLink(&axes)).

#include <vexa/Export.h>
#include <vexa/gui/BoolFunc.h>
#include <vexa/gui/Element.h>

#include <runa/rlog.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace CEGUI {
class EventArgs;
}

namespace vexa::gui {

template <typename T>
class VEXA_API TElement : public Element {
public:
    using Callback = std::function<void(const T*)>;

    /// Appends a change callback; callbacks run in the order they were subscribed.
    T* Subscribe(Callback callback)
    {
        if (!callback) {
            rlog::Warn("Empty change callback ignored", "vexa::gui::TElement::Subscribe");
            return Self();
        }
        callbacks_.push_back(std::move(callback));
        return Self();
    }

    /// Replaces the visibility condition; an empty function removes it (always shown).
    T* SetConditionFunc(std::function<bool()> condition)
    {
        SetConditionFuncImpl(std::move(condition));
        return Self();
    }

    /// Shows the element while `*flag` is true (IfTrue) or false (any other value). The flag
    /// is read at every condition test, so the caller keeps it alive as long as the element.
    T* SetConditionBool(bool* flag, BoolFunc func)
    {
        if (flag == nullptr) {
            rlog::Warn("No flag given, the condition stays as it was",
                       "vexa::gui::TElement::SetConditionBool");
            return Self();
        }
        if (func == BoolFunc::IfTrue)
            SetConditionFuncImpl([flag] { return *flag; });
        else
            SetConditionFuncImpl([flag] { return !*flag; });
        return Self();
    }

protected:
    explicit TElement(const CEGUI::Window* widget)
        : Element(widget), alive_(std::make_shared<TElement*>(this))
    {
    }
    // A copy or a moved-to element gets its own liveness token: handlers subscribed for the
    // source must keep following the source, not the copy.
    TElement(const TElement& other)
        : Element(other), callbacks_(other.callbacks_), alive_(std::make_shared<TElement*>(this))
    {
    }
    TElement(TElement&& other) noexcept
        : Element(std::move(other)), callbacks_(std::move(other.callbacks_)),
          alive_(std::make_shared<TElement*>(this))
    {
    }

    /// Calls every change callback with this element, in subscription order.
    virtual void NotifyChange() const
    {
        const T* self = static_cast<const T*>(this);
        // By index and by copy: a callback may subscribe more callbacks, which moves the list.
        const std::size_t count = callbacks_.size();
        for (std::size_t i = 0; i < count; ++i) {
            Callback callback = callbacks_[i];
            callback(self);
        }
    }

public:
    // Declared after NotifyChange, which keeps the first virtual slot.
    virtual ~TElement()
    {
        if (alive_)
            *alive_ = nullptr;
    }

protected:
    /// Wraps `handler(T* element, const CEGUI::EventArgs&)` into a CEGUI event handler that
    /// does nothing once this element is destroyed (the widget may outlive it) and always
    /// reports the event as handled. Subscribing these instead of unsubscribing in the
    /// destructor keeps an element safe to destroy from inside one of its own events.
    template <typename Handler>
    auto Guard(Handler handler) const
    {
        return [alive = alive_, handler](const CEGUI::EventArgs& args) -> bool {
            if (TElement* self = *alive)
                handler(static_cast<T*>(self), args);
            return true;
        };
    }

    T* Self() { return static_cast<T*>(this); }

private:
    std::vector<Callback> callbacks_;
    std::shared_ptr<TElement*> alive_;
};

} // namespace vexa::gui
