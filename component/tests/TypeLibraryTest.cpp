// The type library as the DLL carries it: the order of the vtable, identifiers, types, help.

#include <fstream>
#include <map>
#include <sstream>

#include "component/tests/Client.h"

namespace palvex::component::testing {
namespace {

struct Function {
  std::string name;
  std::string kind;
  DISPID id = 0;
  std::string signature;
};

/// The interface as it stands in data/interface.txt.
std::vector<Function> promised() {
  std::ifstream file(PALVEX_INTERFACE);
  std::vector<Function> functions;
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    Function f;
    if (line[0] != '#' && fields >> f.name >> f.kind >> f.id >> f.signature) functions.push_back(f);
  }
  return functions;
}

std::string typeName(const TYPEDESC& type) {
  static const std::map<VARTYPE, std::string> names{{VT_I2, "short"},  {VT_I4, "long"},
                                                    {VT_R8, "double"}, {VT_BOOL, "bool"},
                                                    {VT_BSTR, "text"}, {VT_VARIANT, "variant"}};
  const auto found = names.find(type.vt);
  return found != names.end() ? found->second : std::to_string(type.vt);
}

std::string signature(const FUNCDESC& function) {
  std::string made;
  for (SHORT i = 0; i < function.cParams; ++i) {
    const ELEMDESC& argument = function.lprgelemdescParam[i];
    const USHORT flags = argument.paramdesc.wParamFlags;
    if (flags & PARAMFLAG_FRETVAL) {
      made += '>';
      made += typeName(*argument.tdesc.lptdesc);
      continue;
    }
    if (i > 0) made += ",";
    const bool reference = argument.tdesc.vt == VT_PTR;
    made += typeName(reference ? *argument.tdesc.lptdesc : argument.tdesc);
    if (reference) made += '&';
    if (flags & PARAMFLAG_FOPT) made += "?";
  }
  return made;
}

TEST(TypeLibrary, KeepsTheOrderOfTheVtable) {
  const std::vector<Function> expectedFunctions = promised();
  Ref<ITypeLib> library;
  ASSERT_EQ(LoadTypeLibEx(L"palvex.dll", REGKIND_NONE, library.receive()), S_OK);
  Ref<ITypeInfo> dispatch;
  ASSERT_EQ(library->GetTypeInfoOfGuid(__uuidof(_c_Distribution), dispatch.receive()), S_OK);
  // The dual interface has two faces; the one with the vtable hangs on the dispatch one.
  HREFTYPE face = 0;
  ASSERT_EQ(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &face), S_OK);
  Ref<ITypeInfo> vtable;
  ASSERT_EQ(dispatch->GetRefTypeInfo(face, vtable.receive()), S_OK);
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(vtable->GetTypeAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->wTypeFlags & TYPEFLAG_FDUAL, TYPEFLAG_FDUAL);
  ASSERT_EQ(attributes->cFuncs, expectedFunctions.size());
  vtable->ReleaseTypeAttr(attributes);

  const std::map<std::string, INVOKEKIND> kinds{{"get", INVOKE_PROPERTYGET},
                                                {"put", INVOKE_PROPERTYPUT},
                                                {"putref", INVOKE_PROPERTYPUTREF},
                                                {"call", INVOKE_FUNC}};
  constexpr std::size_t slotsOfDispatch = 7;
  for (std::size_t i = 0; i < expectedFunctions.size(); ++i) {
    const Function& expected = expectedFunctions[i];
    FUNCDESC* found = nullptr;
    ASSERT_EQ(vtable->GetFuncDesc(static_cast<UINT>(i), &found), S_OK);
    Bstr name;
    Bstr help;
    vtable->GetDocumentation(found->memid, name.receive(), help.receive(), nullptr, nullptr);
    EXPECT_EQ(utf8FromBstr(name.get()), expected.name);
    EXPECT_NE(utf8FromBstr(help.get()), "") << expected.name;
    EXPECT_EQ(found->invkind, kinds.at(expected.kind)) << expected.name;
    EXPECT_EQ(found->memid, expected.id) << expected.name;

    EXPECT_EQ(signature(*found), expected.signature) << expected.name;
    EXPECT_EQ(static_cast<std::size_t>(found->oVft), (slotsOfDispatch + i) * sizeof(void*));
    vtable->ReleaseFuncDesc(found);
  }
}

}  // namespace
}  // namespace palvex::component::testing
