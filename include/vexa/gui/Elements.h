#pragma once
// Every GUI element handle a GuiGenerator hands out.

#include <vexa/gui/BoolFunc.h>
#include <vexa/gui/Button.h>
#include <vexa/gui/Checkbox.h>
#include <vexa/gui/CheckboxList.h>
#include <vexa/gui/Droplist.h>
#include <vexa/gui/Element.h>
#include <vexa/gui/HostedWindow.h>
#include <vexa/gui/Label.h>
#include <vexa/gui/LinkedElement.h>
#include <vexa/gui/NumericFloat.h>
#include <vexa/gui/NumericInt.h>
#include <vexa/gui/Panel.h>
#include <vexa/gui/Separator.h>
#include <vexa/gui/SlidingFloat.h>
#include <vexa/gui/SlidingInt.h>
#include <vexa/gui/TElement.h>
