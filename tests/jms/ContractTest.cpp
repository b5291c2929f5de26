// No compiler checks the names and JNI signatures that the bridge asks the connector for: this compares them
// with the compiled class.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "host/connection/ConnectionState.h"
#include "jms/ConnectorMethods.h"

namespace {

std::string declaredMethods() {
    FILE* pipe = popen(KEL_JAVAP " -s -cp " KEL_CONNECTORS_JAR " com.morvex.kel.connectors.JmsConnector", "r");
    std::string text;
    char buffer[4096];
    while (const size_t count = fread(buffer, 1, sizeof buffer, pipe)) text.append(buffer, count);
    return pclose(pipe) == 0 ? text : "";
}

TEST(ConnectorContract, EveryMethodOfTheBridgeIsInTheConnector) {
    const std::string declared = declaredMethods();
    ASSERT_NE(declared, "");
    const auto check = [&](const contract::Method& method, bool isStatic = false) {
        const std::string className = "com.morvex.kel.connectors.JmsConnector";
        const std::string name = std::string(method.name) == "<init>" ? className : method.name;
        const size_t at = declared.find(" " + name + "("), line = declared.rfind('\n', at), descriptor = declared.find("descriptor: ", at);
        ASSERT_NE(at, std::string::npos) << name << " is missing or not public";
        EXPECT_TRUE(declared.substr(descriptor + 12).starts_with(method.signature + std::string("\n"))) << name;
        EXPECT_EQ(declared.find("static", line) < at, isStatic) << name;
    };
    for (const contract::Method& method : contract::kUncached) check(method);
    for (const contract::CachedMethod& cached : contract::kCached) check(cached.method);
    check(host::kConnectionStateMethod, true);
}

}  // namespace
