#include "hosts/calc/Conversion.h"

#include <com/sun/star/script/CannotConvertException.hpp>
#include <com/sun/star/script/Converter.hpp>
#include <com/sun/star/uno/Sequence.hxx>

#include "hosts/calc/Office.h"
#include "hosts/calc/Range.h"
#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"

namespace palvex::calc {

namespace {

Variant fromTable(const Sequence<Sequence<Any>>& rows) {
  const sal_Int32 width = rows.hasElements() ? rows[0].getLength() : 0;
  if (width == 0) raise(fault::typeMismatch);
  Variant table = Variant::array(rows.getLength(), width);
  for (sal_Int32 i = 0; i < rows.getLength(); ++i) {
    if (rows[i].getLength() != width) raise(fault::typeMismatch);
    for (sal_Int32 j = 0; j < width; ++j) table.at(i + 1, j + 1) = fromOffice(rows[i][j]);
  }
  return table;
}

/// A sequence of anything; Basic makes one of the narrowest type that holds all items.
Variant fromList(const Any& given) try {
  Sequence<Any> items;
  css::script::Converter::create(context())->convertTo(
      given, cppu::UnoType<Sequence<Any>>::get()) >>= items;
  Variant list = Variant::array(items.getLength());
  for (sal_Int32 i = 0; i < items.getLength(); ++i) list.at(i + 1) = fromOffice(items[i]);
  return list;
} catch (const css::script::CannotConvertException&) {
  raise(fault::typeMismatch);
}

}  // namespace

Variant fromOffice(const Any& given) {
  switch (given.getValueTypeClass()) {
    case css::uno::TypeClass_VOID:
      return {};
    case css::uno::TypeClass_BOOLEAN:
      return given.get<bool>();
    case css::uno::TypeClass_CHAR:
      return utf8(rtl::OUString(*static_cast<const sal_Unicode*>(given.getValue())));
    case css::uno::TypeClass_STRING:
      return utf8(given.get<rtl::OUString>());
    case css::uno::TypeClass_HYPER:
      return given.get<sal_Int64>();
    case css::uno::TypeClass_UNSIGNED_HYPER:
      return given.get<sal_uInt64>();
    case css::uno::TypeClass_INTERFACE:
      return rangeFrom(given.get<css::uno::Reference<css::uno::XInterface>>());
    default:
      break;
  }
  // Every other kind of number converts to this one.
  if (double number = 0; given >>= number) return number;
  if (Sequence<Sequence<Any>> rows; given >>= rows) return fromTable(rows);
  return fromList(given);
}

Any toOffice(const Variant& answer) {
  if (answer.isArray()) {
    Sequence<Any> items(answer.upperBound());
    for (sal_Int32 i = 0; i < items.getLength(); ++i)
      items.getArray()[i] = toOffice(answer.at(i + 1));
    return Any(items);
  }
  if (answer.isText()) return Any(wide(answer.toText()));
  if (answer.isEmpty()) return {};
  return Any(answer.toDouble());
}

}  // namespace palvex::calc
