// The entry points of the component: one function per service, named in palvex.components.

#include <sal/types.h>

#include "hosts/calc/Distribution.h"
#include "hosts/calc/Functions.h"
#include "hosts/calc/Office.h"
#include "hosts/calc/Simulate.h"

using css::uno::Any;
using css::uno::Sequence;
using css::uno::XComponentContext;
using css::uno::XInterface;

namespace {

/// A new object, with a reference for the caller.
template <class Service>
XInterface* make(XComponentContext* context) {
  palvex::calc::enter(context);
  auto* const object = new Service;
  object->acquire();
  return static_cast<cppu::OWeakObject*>(object);
}

}  // namespace

extern "C" SAL_DLLPUBLIC_EXPORT XInterface* palvex_distribution(XComponentContext* context,
                                                                const Sequence<Any>&) {
  return make<palvex::calc::Distribution>(context);
}

extern "C" SAL_DLLPUBLIC_EXPORT XInterface* palvex_functions(XComponentContext* context,
                                                             const Sequence<Any>&) {
  return make<palvex::calc::Functions>(context);
}

extern "C" SAL_DLLPUBLIC_EXPORT XInterface* palvex_simulation(XComponentContext* context,
                                                              const Sequence<Any>&) {
  return make<palvex::calc::Simulate>(context);
}
