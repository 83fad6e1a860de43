#pragma once

#include <com/sun/star/lang/XServiceInfo.hpp>
#include <com/sun/star/task/XJobExecutor.hpp>
#include <cppuhelper/implbase2.hxx>

namespace css = com::sun::star;

namespace palvex::calc {

/// The service palvex.Simulation, behind the menu "palvex": trigger("run") simulates the document
/// that is open, trigger("new") gives it a table to start from. What goes wrong is shown in a
/// message box and thrown.
class Simulate final
    : public cppu::WeakImplHelper2<css::task::XJobExecutor, css::lang::XServiceInfo> {
 public:
  static constexpr const char* implementation = "palvex.Simulation";

  void SAL_CALL trigger(const rtl::OUString& event) override;

  // XServiceInfo
  rtl::OUString SAL_CALL getImplementationName() override;
  sal_Bool SAL_CALL supportsService(const rtl::OUString& service) override;
  css::uno::Sequence<rtl::OUString> SAL_CALL getSupportedServiceNames() override;
};

}  // namespace palvex::calc
