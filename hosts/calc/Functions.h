#pragma once

#include <com/sun/star/lang/XServiceInfo.hpp>
#include <cppuhelper/implbase2.hxx>
#include <palvex/XFunctions.hpp>

namespace css = com::sun::star;

namespace palvex::calc {

/// The worksheet functions, over the law itself. A description that is no distribution, and a
/// result that is no number, are worksheet errors; `check` says in a sentence why.
class Functions final : public cppu::WeakImplHelper2<palvex::XFunctions, css::lang::XServiceInfo> {
 public:
  static constexpr const char* implementation = "palvex.Functions";

  using Text = rtl::OUString;
  using Given = const css::uno::Any&;

  double SAL_CALL density(const Text& kind, double x, Given p1, Given p2, Given p3, Given p4,
                          Given ltl, Given utl) override;
  double SAL_CALL probability(const Text& kind, double x, Given p1, Given p2, Given p3, Given p4,
                              Given ltl, Given utl) override;
  double SAL_CALL exceedance(const Text& kind, double x, Given p1, Given p2, Given p3, Given p4,
                             Given ltl, Given utl) override;
  double SAL_CALL quantile(const Text& kind, double p, Given p1, Given p2, Given p3, Given p4,
                           Given ltl, Given utl) override;
  double SAL_CALL mean(const Text& kind, Given p1, Given p2, Given p3, Given p4, Given ltl,
                       Given utl) override;
  double SAL_CALL stdev(const Text& kind, Given p1, Given p2, Given p3, Given p4, Given ltl,
                        Given utl) override;
  Text SAL_CALL check(const Text& kind, Given p1, Given p2, Given p3, Given p4, Given ltl,
                      Given utl) override;

  // XServiceInfo
  Text SAL_CALL getImplementationName() override;
  sal_Bool SAL_CALL supportsService(const Text& service) override;
  css::uno::Sequence<Text> SAL_CALL getSupportedServiceNames() override;
};

}  // namespace palvex::calc
