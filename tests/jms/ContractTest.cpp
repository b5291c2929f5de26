// No compiler checks the names and JNI signatures that the bridge and the host ask the connector for: this
// compares them with the compiled classes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "host/connection/ConnectionState.h"
#include "host/connection/Delivery.h"
#include "jms/ConnectorMethods.h"

namespace {

std::string declaredMethods(const std::string& className) {
    FILE* pipe = popen((KEL_JAVAP " -s -cp " KEL_CONNECTORS_JAR " " + className).c_str(), "r");
    std::string text;
    char buffer[4096];
    while (const size_t count = fread(buffer, 1, sizeof buffer, pipe)) text.append(buffer, count);
    return pclose(pipe) == 0 ? text : "";
}

class Declared {
public:
    explicit Declared(std::string path) : className_(std::move(path)) {
        std::replace(className_.begin(), className_.end(), '/', '.');
        text_ = declaredMethods(className_);
    }

    void check(const contract::Method& method, bool isStatic) const {
        const std::string name = std::string(method.name) == "<init>" ? className_ : method.name;
        const size_t at = text_.find(" " + name + "("), line = text_.rfind('\n', at), descriptor = text_.find("descriptor: ", at);
        ASSERT_NE(at, std::string::npos) << className_ << "." << name << " is missing or not public";
        EXPECT_TRUE(text_.substr(descriptor + 12).starts_with(method.signature + std::string("\n"))) << name;
        EXPECT_EQ(text_.find("static", line) < at, isStatic) << name;
    }

private:
    std::string className_;
    std::string text_;
};

TEST(ConnectorContract, EveryMethodThatNativeCodeCallsIsInTheConnector) {
    const Declared connector(contract::kClass);
    for (const contract::Method& method : contract::kUncached) connector.check(method, false);
    for (const contract::CachedMethod& cached : contract::kCached) connector.check(cached.method, false);
    connector.check(host::kConnectionStateMethod, true);
    const Declared delivery(host::delivery::kClass);
    for (const contract::Method& method : host::delivery::kMethods) delivery.check(method, true);
}

}  // namespace
