#pragma once
// How an element's visibility reads a flag of the caller (gui::TElement::SetConditionBool).

namespace vexa {

enum class BoolFunc : int {
    IfTrue = 0,  ///< shown while the flag is true
    IfFalse = 1, ///< shown while the flag is false; any other non-zero value reads the same way
};

} // namespace vexa
