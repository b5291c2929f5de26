#include "host/Plugin.h"

#include <gtest/gtest.h>

#include "host/Console.h"

namespace {

std::string failureOf(const std::string& file) {
    try {
        const host::Plugin plugin(file);
        return "none";
    } catch (const host::Failure& failure) {
        return failure.what();
    }
}

TEST(Plugin, NamesEveryMissingEntryPoint) {
    const std::string text = failureOf(KEL_NO_PLUGIN);
    EXPECT_TRUE(text.starts_with(std::string("The plug-in ") + KEL_NO_PLUGIN + " lacks the entry points createAdapter, ")) << text;
    EXPECT_TRUE(text.ends_with(", getSampleRow.")) << text;
    EXPECT_TRUE(failureOf("/absent.so").starts_with("The plug-in cannot be loaded: /absent.so: "));
}

TEST(Plugin, EveryEntryPointIsTheOneOfItsName) {
    const host::Plugin plugin(KEL_PLUGIN);
    void* adapter = plugin.createAdapter();
    EXPECT_FALSE(plugin.hasError(adapter));
    EXPECT_EQ(plugin.getTotalRowsProcessed(adapter), 0);
    plugin.deleteAdapter(adapter);
    plugin.deleteAdapter(nullptr);
}

}  // namespace
