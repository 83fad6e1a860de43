#pragma once

#include <com/sun/star/uno/Any.hxx>

#include "runtime/Variant.h"

namespace css = com::sun::star;

namespace palvex::calc {

/// What the office hands over, for the engine. A void is empty; a cell or a range, native or a
/// Range object of Basic's VBA mode, becomes a live Range; any other object has no members. Error
/// 13 for what the engine has no counterpart for.
Variant fromOffice(const css::uno::Any& given);

/// What the engine answers, for the office: an array becomes a sequence, counted from 0.
css::uno::Any toOffice(const Variant& answer);

}  // namespace palvex::calc
