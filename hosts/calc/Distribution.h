#pragma once

#include <array>
#include <com/sun/star/beans/XExactName.hpp>
#include <com/sun/star/lang/XServiceInfo.hpp>
#include <com/sun/star/script/XInvocation2.hpp>
#include <cppuhelper/implbase3.hxx>
#include <string>

#include "engine/c_Distribution.h"

namespace css = com::sun::star;

namespace palvex::calc {

/// The service palvex.c_Distribution: the members of c_Distribution by their names, letter case
/// ignored, for Basic, Python and whatever else the office scripts with. It has no interface of its
/// own, because only late binding lets plain Basic leave arguments out.
///
/// A failure leaves as an exception whose message holds number, source and description of the
/// error; the members LastErrorNumber, LastErrorSource and LastErrorDescription keep them until the
/// next call that computes.
class Distribution final
    : public cppu::WeakImplHelper3<css::script::XInvocation2, css::beans::XExactName,
                                   css::lang::XServiceInfo> {
 public:
  static constexpr const char* implementation = "palvex.c_Distribution";

  // XInvocation2
  css::uno::Reference<css::beans::XIntrospectionAccess> SAL_CALL getIntrospection() override;
  css::uno::Any SAL_CALL invoke(const rtl::OUString& name,
                                const css::uno::Sequence<css::uno::Any>& arguments,
                                css::uno::Sequence<sal_Int16>& changed,
                                css::uno::Sequence<css::uno::Any>& changedTo) override;
  void SAL_CALL setValue(const rtl::OUString& name, const css::uno::Any& value) override;
  css::uno::Any SAL_CALL getValue(const rtl::OUString& name) override;
  sal_Bool SAL_CALL hasMethod(const rtl::OUString& name) override;
  sal_Bool SAL_CALL hasProperty(const rtl::OUString& name) override;
  css::uno::Sequence<rtl::OUString> SAL_CALL getMemberNames() override;
  css::uno::Sequence<css::script::InvocationInfo> SAL_CALL getInfo() override;
  css::script::InvocationInfo SAL_CALL getInfoForName(const rtl::OUString& name,
                                                      sal_Bool exact) override;
  // XExactName
  rtl::OUString SAL_CALL getExactName(const rtl::OUString& approximate) override;
  // XServiceInfo
  rtl::OUString SAL_CALL getImplementationName() override;
  sal_Bool SAL_CALL supportsService(const rtl::OUString& service) override;
  css::uno::Sequence<rtl::OUString> SAL_CALL getSupportedServiceNames() override;

  // ---- for the table of the members ----

  struct Failure {
    std::int32_t number = 0;
    std::string source;
    std::string description;
  };

  [[nodiscard]] c_Distribution& engine() { return engine_; }
  [[nodiscard]] const Failure& lastError() const { return lastError_; }
  /// What was given for a parameter (0..3), a lower (4) or an upper limit (5), as it was given.
  [[nodiscard]] const css::uno::Any& given(std::size_t place) const { return given_.at(place); }
  void give(std::size_t place, const css::uno::Any& value);

 private:
  /// Runs `work`; keeps number, source and description of a failure before it is passed on.
  template <class Work>
  auto attempt(Work&& work);

  c_Distribution engine_;
  std::array<css::uno::Any, 6> given_;
  Failure lastError_;
};

}  // namespace palvex::calc
