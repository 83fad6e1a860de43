// The type library as the DLL carries it: the order of the vtable, identifiers, types, help.

#include "component/tests/Client.h"

namespace palvex::component::testing {
namespace {

enum Kind { get, put, putref, call };

struct Function {
  const char* name;
  Kind kind;
  DISPID id;
  const char* signature;  // the arguments' types, optional ones with "?", then the result's
};

// The interface as it was promised, slot by slot.
constexpr Function promised[] = {
    {"param1", get, 1, ">variant"},
    {"param1", put, 1, "variant"},
    {"param1", putref, 1, "variant"},
    {"param2", get, 2, ">variant"},
    {"param2", put, 2, "variant"},
    {"param2", putref, 2, "variant"},
    {"param3", get, 3, ">variant"},
    {"param3", put, 3, "variant"},
    {"param3", putref, 3, "variant"},
    {"param4", get, 4, ">variant"},
    {"param4", put, 4, "variant"},
    {"param4", putref, 4, "variant"},
    {"ltl", get, 5, ">variant"},
    {"ltl", put, 5, "variant"},
    {"ltl", putref, 5, "variant"},
    {"utl", get, 6, ">variant"},
    {"utl", put, 6, "variant"},
    {"utl", putref, 6, "variant"},
    {"Active", get, 7, ">bool"},
    {"Active", put, 7, "bool"},
    {"Dynamic", get, 8, ">bool"},
    {"Dynamic", put, 8, "bool"},
    {"graphMax", get, 9, ">text"},
    {"graphMax", put, 9, "text"},
    {"graphMin", get, 10, ">text"},
    {"graphMin", put, 10, "text"},
    {"numberFormat", get, 11, ">text"},
    {"numberFormat", put, 11, "text"},
    {"ValidDistributions", get, 12, ">variant"},
    {"DataConfigurations", get, 13, ">variant"},
    {"ScaleFactor", get, 14, ">double"},
    {"ScaleFactor", put, 14, "double"},
    {"distType", get, 15, ">text"},
    {"distType", put, 15, "text"},
    {"GraphX", get, 16, "short>double"},
    {"GraphX", put, 16, "short,double"},
    {"GraphPDF", get, 17, "short>double"},
    {"GraphPDF", put, 17, "short,double"},
    {"GraphOL", get, 18, "short>double"},
    {"GraphOL", put, 18, "short,double"},
    {"ResizeArrays", call, 19, "short>variant"},
    {"NumPoints", get, 20, ">short"},
    {"GuessParamValue", call, 21, "short,double>double"},
    {"RandVal", call, 22, "double>double"},
    {"CalcMean", call, 23, ">double"},
    {"CalcStdev", call, 24, "double>double"},
    {"mean", get, 25, ">double"},
    {"StDev", get, 26, "variant?>double"},
    {"XMin", get, 27, "variant?>double"},
    {"XMax", get, 28, "variant?>double"},
    {"pdf", call, 29, "double,bool?,variant?>double"},
    {"cdf", call, 30, "double>double"},
    {"CreateGraphData", call, 31, "double,double,bool?"},
    {"ParamsOK", call, 32, "text&>bool"},
    {"NegInfinity", get, 33, ">text"},
    {"PosInfinity", get, 34, ">text"},
    {"ParamName", call, 35, "long>text"},
    {"NumParams", call, 36, ">short"},
};

std::string typeName(const TYPEDESC& type) {
  switch (type.vt) {
    case VT_I2:
      return "short";
    case VT_I4:
      return "long";
    case VT_R8:
      return "double";
    case VT_BOOL:
      return "bool";
    case VT_BSTR:
      return "text";
    case VT_VARIANT:
      return "variant";
    default:
      return std::to_string(type.vt);
  }
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
  ASSERT_EQ(attributes->cFuncs, std::size(promised));
  vtable->ReleaseTypeAttr(attributes);

  constexpr INVOKEKIND kinds[] = {INVOKE_PROPERTYGET, INVOKE_PROPERTYPUT, INVOKE_PROPERTYPUTREF,
                                  INVOKE_FUNC};
  constexpr std::size_t slotsOfDispatch = 7;
  for (std::size_t i = 0; i < std::size(promised); ++i) {
    const Function& expected = promised[i];
    FUNCDESC* found = nullptr;
    ASSERT_EQ(vtable->GetFuncDesc(static_cast<UINT>(i), &found), S_OK);
    Bstr name;
    Bstr help;
    vtable->GetDocumentation(found->memid, name.receive(), help.receive(), nullptr, nullptr);
    EXPECT_EQ(utf8FromBstr(name.get()), expected.name);
    EXPECT_NE(utf8FromBstr(help.get()), "") << expected.name;
    EXPECT_EQ(found->invkind, kinds[expected.kind]) << expected.name;
    EXPECT_EQ(found->memid, expected.id) << expected.name;
    EXPECT_EQ(signature(*found), expected.signature) << expected.name;
    EXPECT_EQ(static_cast<std::size_t>(found->oVft), (slotsOfDispatch + i) * sizeof(void*));
    vtable->ReleaseFuncDesc(found);
  }
}

}  // namespace
}  // namespace palvex::component::testing
