#pragma once

#include "component/Owned.h"
#include "runtime/Variant.h"

namespace palvex::component {

/// What a host handed over, as the engine takes it: every kind of number, a date (its serial
/// number), a currency and a decimal as a number; a Boolean, a text, an empty; a null and a
/// left-out argument as missing; a worksheet error value by its number; an object by late binding;
/// an array of one or two dimensions, counted from 1; a reference to any of these by what it refers
/// to.
/// @throws RuntimeError 13 for anything else (records, deeper arrays, arrays in arrays)
[[nodiscard]] Variant fromAutomation(const VARIANT& given);

/// What the engine hands out: an empty, a number, a text or an array of these. An integer that fits
/// 32 bits travels as such, because it is the index of a collection's item.
/// @throws RuntimeError 13 for anything else
[[nodiscard]] OwnedVariant toAutomation(const Variant& value);

/// A copy that shares nothing with `given` and refers to nothing (a reference is followed).
[[nodiscard]] OwnedVariant copyOf(const VARIANT& given);

}  // namespace palvex::component
