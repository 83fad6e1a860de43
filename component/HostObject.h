#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "component/Owned.h"
#include "runtime/Object.h"

namespace palvex::component {

/// An object of the host, such as a worksheet range, read by late binding. Its own errors arrive
/// with their number, source and description.
class HostObject final : public Object, public std::enable_shared_from_this<HostObject> {
 public:
  explicit HostObject(Ref<IDispatch> object) noexcept : object_(std::move(object)) {}

 protected:
  Variant doGet(std::string_view member, const std::vector<Variant>& arguments) override;

 private:
  DISPID identifier(std::string_view member);

  Ref<IDispatch> object_;
  std::vector<std::pair<std::string, DISPID>> identifiers_;  // of the members read so far
};

}  // namespace palvex::component
