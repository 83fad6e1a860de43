#include "runtime/Object.h"

#include <algorithm>
#include <exception>
#include <new>

namespace palvex {

Variant Object::get(std::string_view member, const std::vector<Variant>& arguments, Line line) {
  try {
    return doGet(member, arguments);
  } catch (RuntimeError& error) {
    error.leave(line);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    throw RuntimeError(fault::invalidCall, failure.what(), "palvex", line);
  } catch (...) {
    raise(fault::invalidCall, line);
  }
}

Variant Object::doGet(std::string_view, const std::vector<Variant>&) {
  throw RuntimeError(fault::unknownMember);
}

bool sameMember(std::string_view a, std::string_view b) noexcept {
  const auto lower = [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace palvex
