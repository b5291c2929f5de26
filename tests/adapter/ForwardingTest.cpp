// Each forwarding member makes exactly one toolkit call, with its arguments in the right places, and hands
// back what the toolkit answers.
#include <gtest/gtest.h>

#include "adapter/Adapter.h"
#include "tests/doubles/FakeToolkit.h"
#include "tests/doubles/IdleAdapter.h"

namespace {

void* h(const char* name) { return fake::handle(name); }

std::string taken(char* text) {
    std::string copy = text;
    delete[] text;
    return copy;
}
std::string name(void* handle) { return *static_cast<std::string*>(handle); }
template <typename Number>
std::string num(Number number) {
    return std::to_string(number);
}

const char* const kTexts[] = {"t0", "t1"};
const char** texts() { return const_cast<const char**>(kTexts); }

struct Forward {
    const char* call;    // what reaches the toolkit
    const char* answer;  // what comes back, as text
    std::string (*use)(Adapter& a);
};

// clang-format off
const Forward kForwards[] = {
    {"getL10NMessage(cb,k)", "k", [](Adapter& a) { return taken(a.getL10NMessage("k")); }},
    {"getL10NMessageWithParam(cb,k,1)", "k 1", [](Adapter& a) { return taken(a.getL10NMessage("k", "1")); }},
    {"getL10NMessageWithTwoParams(cb,k,1,2)", "k 1 2", [](Adapter& a) { return taken(a.getL10NMessage("k", "1", "2")); }},
    {"getL10NMessageWithThreeParams(cb,k,1,2,3)", "k 1 2 3", [](Adapter& a) { return taken(a.getL10NMessage("k", "1", "2", "3")); }},
    {"getL10NMessageWithFourParams(cb,k,1,2,3,4)", "k 1 2 3 4", [](Adapter& a) { return taken(a.getL10NMessage("k", "1", "2", "3", "4")); }},
    {"getL10NMessageWithFiveParams(cb,k,1,2,3,4,5)", "k 1 2 3 4 5", [](Adapter& a) { return taken(a.getL10NMessage("k", "1", "2", "3", "4", "5")); }},
    {"getL10NMessageWithMultParams(cb,k,2,t0)", "k t0", [](Adapter& a) { return taken(a.getL10NMessage("k", 2, texts())); }},
    {"getL10NMessage(cb,k)", "k", [](Adapter& a) { return a.getL10NMessageAsString("k"); }},
    {"getL10NMessageWithParam(cb,k,1)", "k 1", [](Adapter& a) { return a.getL10NMessageAsString("k", "1"); }},
    {"getL10NMessageWithTwoParams(cb,k,1,2)", "k 1 2", [](Adapter& a) { return a.getL10NMessageAsString("k", "1", "2"); }},
    {"getL10NMessageWithThreeParams(cb,k,1,2,3)", "k 1 2 3", [](Adapter& a) { return a.getL10NMessageAsString("k", "1", "2", "3"); }},
    {"getL10NMessageWithFourParams(cb,k,1,2,3,4)", "k 1 2 3 4", [](Adapter& a) { return a.getL10NMessageAsString("k", "1", "2", "3", "4"); }},
    {"getL10NMessageWithFiveParams(cb,k,1,2,3,4,5)", "k 1 2 3 4 5", [](Adapter& a) { return a.getL10NMessageAsString("k", "1", "2", "3", "4", "5"); }},
    {"getL10NMessageWithMultParams(cb,k,2,t0)", "k t0", [](Adapter& a) { return a.getL10NMessageAsString("k", 2, texts()); }},
    {"deleteL10NMessage(x)", "", [](Adapter& a) { a.deleteL10NMessage(new char[2]{'x', '\0'}); return std::string(); }},
    {"checkErrorSeverity(k)", "1", [](Adapter& a) { return num(a.checkErrorSeverity("k")); }},
    {"getErrorSeverity(k)", "3", [](Adapter& a) { return num(a.getErrorSeverity("k")); }},
    {"logMessage(cb,5,t)", "", [](Adapter& a) { a.callLogMessage(5, "t"); return std::string(); }},
    {"logMessage(cb,6,s)", "", [](Adapter& a) { a.callLogMessage(6, std::string("s")); return std::string(); }},
    {"setAdapterState(cb,4)", "", [](Adapter& a) { a.setState(4); return std::string(); }},
    {"getAdapterState(cb)", "-1", [](Adapter& a) { return num(a.getState()); }},
    {"getName(cb)", "getName", [](Adapter& a) { return taken(a.getAdapterName()); }},
    {"notifyConnState(cb,2)", "", [](Adapter& a) { a.callNotifyConnState(2); return std::string(); }},
    {"postStartSync(cb)", "", [](Adapter& a) { a.callPostStartSync(); return std::string(); }},
    {"postEndSync(cb)", "", [](Adapter& a) { a.callPostEndSync(); return std::string(); }},
    {"getTimeContext(cb)", "getTimeContext", [](Adapter& a) { return name(a.getTimeContext()); }},
    {"activateOutput(cb)", "", [](Adapter& a) { a.activateOutput(); return std::string(); }},
    {"deactivateOutput(cb)", "", [](Adapter& a) { a.deactivateOutput(); return std::string(); }},

    {"getConnectionParamString(p,n)", "7", [](Adapter& a) { return taken(a.getConnectionParamString(h("p"), "n")); }},
    {"getConnectionParamInt64_t(p,n)", "7", [](Adapter& a) { return num(a.getConnectionParamInt64_t(h("p"), "n")); }},
    {"getConnectionParamAsString(p,n)", "getConnectionParamAsString", [](Adapter& a) { return taken(a.getConnectionParamAsString(h("p"), "n")); }},
    {"doesConnectionParamExist(p,n)", "1", [](Adapter& a) { return num(a.doesConnectionParamExist(h("p"), "n")); }},
    {"addConnectionParam(p,n,v)", "", [](Adapter& a) { a.addConnectionParam(h("p"), "n", "v"); return std::string(); }},
    {"addParam(p,n,v)", "", [](Adapter& a) { a.addParam(h("p"), "n", "v"); return std::string(); }},
    {"getConfiguredSections(p)", "getConfiguredSections", [](Adapter& a) { return taken(a.getConfiguredSections(h("p"))); }},

    {"createConnectionErrors()", "errors", [](Adapter& a) { return name(a.createConnectionErrors()); }},
    {"clearConnectionErrors(e)", "", [](Adapter& a) { a.clearConnectionErrors(h("e")); return std::string(); }},
    {"deleteConnectionErrors(e)", "", [](Adapter& a) { a.deleteConnectionErrors(h("e")); return std::string(); }},
    {"addGeneral(e,t)", "", [](Adapter& a) { a.addGeneral(h("e"), "t"); return std::string(); }},
    {"empty(own)", "1", [](Adapter& a) { a.connectionErrors = h("own"); return num(a.hasError()); }},
    {"getAdapterError(own)", "7 getAdapterError", [](Adapter& a) { a.connectionErrors = h("own"); char* text = nullptr; const int n = a.getError(&text); return num(n) + " " + taken(text); }},

    {"getStreamName(cb,own)", "Trades", [](Adapter& a) { a.connectionRowType = h("own"); return std::string(a.callGetStreamName()); }},
    {"createConnectionRow(RowByNames)", "", [](Adapter& a) { a.createConnectionRow("RowByNames"); return std::string(); }},
    {"deleteConnectionRow(r)", "", [](Adapter& a) { a.deleteConnectionRow(h("r")); return std::string(); }},
    {"setFieldAsStringWithIndex(r,2,v)", "1", [](Adapter& a) { return num(a.setFieldAsStringWithIndex(h("r"), 2, "v")); }},
    {"getFieldAsStringWithIndex(r,2)", "getFieldAsStringWithIndex", [](Adapter& a) { const char* v = nullptr; return std::string(a.getFieldAsStringWithIndex(h("r"), 2, &v) ? v : ""); }},
    {"setFieldAsStringWithKey(r,n,v)", "1", [](Adapter& a) { return num(a.setFieldAsStringWithKey(h("r"), "n", "v")); }},
    {"getFieldAsStringWithKey(r,n)", "getFieldAsStringWithKey", [](Adapter& a) { const char* v = nullptr; return std::string(a.getFieldAsStringWithKey(h("r"), "n", &v) ? v : ""); }},
    {"setOp(r,i)", "", [](Adapter& a) { a.setOp(h("r"), 'i'); return std::string(); }},
    {"getOp(r)", "g", [](Adapter& a) { return std::string(1, a.getOp(h("r"))); }},
    {"getFlagsAsString(r)", "getFlagsAsString", [](Adapter& a) { return taken(a.getFlagsAsString(h("r"))); }},
    {"clearData(r)", "", [](Adapter& a) { a.clearData(h("r")); return std::string(); }},
    {"size(r)", "3", [](Adapter& a) { return num(a.size(h("r"))); }},
    {"setStreamType(r,t,true)", "", [](Adapter& a) { a.setStreamType(h("r"), h("t"), true); return std::string(); }},
    {"setStreamName(r,n)", "", [](Adapter& a) { a.setStreamName(h("r"), "n"); return std::string(); }},
    {"toRow(r,9,e)", "toRow", [](Adapter& a) { return name(a.toRow(h("r"), 9, h("e"))); }},
    {"fromRow(r,s)", "1", [](Adapter& a) { return num(a.fromRow(h("r"), h("s"))); }},
    {"allocBuffer(r,8)", "allocBuffer", [](Adapter& a) { return taken(a.allocBuffer(h("r"), 8)); }},
    {"permuteCsvIn(r,m,c)", "1", [](Adapter& a) { return num(a.permuteCsvIn(h("r"), h("m"), "c")); }},
    {"setExternalCount(r,6)", "", [](Adapter& a) { a.setExternalCount(h("r"), 6); return std::string(); }},
    {"setSeparator(r,;)", "", [](Adapter& a) { a.setSeparator(h("r"), ';'); return std::string(); }},
    {"setWithService(r,true)", "", [](Adapter& a) { a.setWithService(h("r"), true); return std::string(); }},
    {"isFailed(r)", "1", [](Adapter& a) { return num(a.isFailed(h("r"))); }},
    {"isDirect(r)", "1", [](Adapter& a) { return num(a.isDirect(h("r"))); }},
    {"setPrototype(r,x)", "", [](Adapter& a) { a.setPrototype(h("r"), h("x")); return std::string(); }},
    {"setTimeFormat(r,f)", "", [](Adapter& a) { a.setTimeFormat(h("r"), "f"); return std::string(); }},
    {"setDateFormat(r,f)", "", [](Adapter& a) { a.setDateFormat(h("r"), "f"); return std::string(); }},
    {"setTimestampFormat(r,f)", "", [](Adapter& a) { a.setTimestampFormat(h("r"), "f"); return std::string(); }},

    {"createConnectionRowPool(RowByOrder)", "createConnectionRowPool", [](Adapter& a) { return name(a.createConnectionRowPool("RowByOrder")); }},
    {"deleteConnectionRowPool(o)", "", [](Adapter& a) { a.deleteConnectionRowPool(h("o")); return std::string(); }},
    {"alloc(o)", "alloc", [](Adapter& a) { return name(a.allocPool(h("o"))); }},
    {"freeConnectionRow(o,r)", "", [](Adapter& a) { a.freePool(h("o"), h("r")); return std::string(); }},

    {"createConnectionPermutation()", "createConnectionPermutation", [](Adapter& a) { return name(a.createConnectionPermutation()); }},
    {"deleteConnectionPermutation(m)", "", [](Adapter& a) { a.deleteConnectionPermutation(h("m")); return std::string(); }},
    {"clearConnectionPermutation(m)", "", [](Adapter& a) { a.clearConnectionPermutation(h("m")); return std::string(); }},
    {"prepareOrder(m)", "1", [](Adapter& a) { return num(a.prepareOrder(h("m"))); }},
    {"prepareOrderWithRowType(m,t)", "1", [](Adapter& a) { return num(a.prepareOrder(h("m"), h("t"))); }},
    {"setExternalOrder(m,2,t0)", "", [](Adapter& a) { a.setExternalOrder(h("m"), 2, texts()); return std::string(); }},
    {"setExternalOrderWithConnRowTypeAsParam(m,t)", "", [](Adapter& a) { a.setExternalOrderWithConnRowTypeAsParam(h("m"), h("t")); return std::string(); }},
    {"setPlatOrder(m,t)", "", [](Adapter& a) { a.setPlatOrder(h("m"), h("t")); return std::string(); }},
    {"setPermutation(m,1,42)", "", [](Adapter& a) { const int order[] = {42}; a.setPermutation(h("m"), 1, order); return std::string(); }},
    {"setPermutationWithRow(m,r)", "", [](Adapter& a) { a.setPermutation(h("m"), h("r")); return std::string(); }},
    {"plat2extWithFieldName(m,n)", "11", [](Adapter& a) { return num(a.plat2extWithFieldName(h("m"), "n")); }},
    {"plat2extWithFieldNum(m,5)", "12", [](Adapter& a) { return num(a.plat2extWithFieldNum(h("m"), 5)); }},
    {"ext2platWithFieldName(m,n)", "13", [](Adapter& a) { return num(a.ext2platWithFieldName(h("m"), "n")); }},
    {"ext2platWithIndex(m,5)", "14", [](Adapter& a) { return num(a.ext2platWithIndex(h("m"), 5)); }},
    {"getColumnNameFromExtOrder(m,5)", "getColumnNameFromExtOrder", [](Adapter& a) { return std::string(a.getColumnNameFromExtOrder(h("m"), 5)); }},
    {"getExtOrder(m,5)", "15", [](Adapter& a) { return num(a.getExtOrder(h("m"), 5)); }},
    {"getExtOrderSize(m)", "16", [](Adapter& a) { return num(a.getExtOrderSize(h("m"))); }},

    {"postTransaction(cb,x)", "1", [](Adapter& a) { return num(a.postTransaction(h("x"))); }},
    {"postTransactionToStream(cb,x,n)", "1", [](Adapter& a) { return num(a.postTransactionToStream(h("x"), "n")); }},
    {"getTransaction(cb,n)", "trans", [](Adapter& a) { return name(a.getTransaction("n")); }},
    {"createConnectionRawTrans()", "rawTrans", [](Adapter& a) { return name(a.createConnectionRawTrans()); }},
    {"deleteConnectionRawTrans(x)", "", [](Adapter& a) { a.deleteConnectionRawTrans(h("x")); return std::string(); }},
    {"clearConnectionRawTrans(x)", "", [](Adapter& a) { a.clearConnectionRawTrans(h("x")); return std::string(); }},
    {"getConnectionRawTrans(x,0)", "raw", [](Adapter& a) { return name(a.getConnectionRawTrans(h("x"), 0)); }},
    {"getConnectionRawTransSize(x)", "1", [](Adapter& a) { return num(a.getConnectionRawTransSize(h("x"))); }},
    {"pushBackConnectionRawTrans(x,s)", "", [](Adapter& a) { a.pushBackConnectionRawTrans(h("x"), h("s")); return std::string(); }},
    {"getConnectionRowType(cb,n)", "getConnectionRowType", [](Adapter& a) { return name(a.getConnectionRowType("n")); }},

    {"enableGDMode(g)", "1", [](Adapter& a) { return num(a.enableGDMode(h("g"))); }},
    {"setGDKeyColumnName(g,n)", "", [](Adapter& a) { a.setGDKeyColumnName(h("g"), "n"); return std::string(); }},
    {"setOpcodeColumnName(g,n)", "", [](Adapter& a) { a.setOpcodeColumnName(h("g"), "n"); return std::string(); }},
    {"getGDKey(g,r)", "17", [](Adapter& a) { return num(a.getGDKey(h("g"), h("r"))); }},
    {"createGDSupport(cb)", "createGDSupport", [](Adapter& a) { return name(a.createGDSupport()); }},
    {"deleteGDSupport(g)", "", [](Adapter& a) { a.deleteGDSupport(h("g")); return std::string(); }},

    {"addLocalSession(cb,s)", "1", [](Adapter& a) { return num(a.addLocalSession("s")); }},
    {"removeLocalSession(cb,s)", "1", [](Adapter& a) { return num(a.removeLocalSession("s")); }},
    {"getGWHostPort(cb)", "getGWHostPort", [](Adapter& a) { return taken(a.getGWHostPort()); }},
    {"getDefaultConnectionInfo(cb)", "getDefaultConnectionInfo", [](Adapter& a) { return taken(a.getDefaultConnectionInfo()); }},
    {"getPlatformConnectivity(cb)", "getPlatformConnectivity", [](Adapter& a) { return name(a.getPlatformConnectivity()); }},
    {"addAdapterStatistics(st,n,v)", "", [](Adapter& a) { a.addAdapterStatistics(static_cast<AdapterStatistics*>(h("st")), "n", "v"); return std::string(); }},
};
// clang-format on

TEST(Forwarding, EachMemberIsOneToolkitCall) {
    for (const Forward& forward : kForwards) {
        SCOPED_TRACE(forward.call);
        auto& toolkit = fake::fresh();
        toolkit.params = {{"n", "7"}};
        toolkit.errors = {"an error"};
        toolkit.controlRows = {h("raw")};
        IdleAdapter adapter;
        adapter.callbackReference = h("cb");
        EXPECT_EQ(forward.use(adapter), forward.answer);
        EXPECT_EQ(toolkit.takeCalls(), std::vector<std::string>{forward.call});
        if (toolkit.row != nullptr) adapter.deleteConnectionRow(toolkit.row);
    }
}

}  // namespace
