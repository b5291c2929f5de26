// What is shown to people: no password, and nothing that steers a terminal.
#include <gtest/gtest.h>

#include "host/process/SafeText.h"
#include "host/process/Secrets.h"

namespace {

TEST(Console, ShowsNoPassword) {
    // # stands for the password: "secret" before, *** after. What follows it stays.
    const std::string rows[] = {
        "",
        "no password here, and passwords = ",
        R"(connection.jndiURL is "tcp://h:1?jms.password=#"; allowed is x = "y".)",
        R"(connection.jndiURL is "tcp://h:1?jms.userName=u&jms.PassWord=#&a=b", a broker)",
        "failover:(tcp://a:1?jms.password=#,tcp://b:2?x.keyStorePasswd=#&c=d)?randomize=false",
        "(tcp://a:1?jms.password=#) is not reachable",
        "(vm:(tcp://a?password=#),tcp://b)",
        "user=u;password=#;x=y",
        "password=# passphrase = # x",
        "passwordFile=#\npassword=#",
        R"(host.jvmOptions has "-Djavax.net.ssl.trustStorePassword=#", which)",
        R"(-Djava.naming.security.credentials=# "-Dx.password=#")",
        R"(<Login Password="#" Name="x"/>)",
        R"(password = '#', x)",
        R"(is "tcp://h?password="; a broker is "x".)",
        "tcp://user:#@host:1/path?a=b@c, failover:(ssl://u:#@a:1,tcp://b:2)",
        "tcp://user@host:1?a=b:c@d http://h:1/a@b",
    };
    const auto with = [](std::string text, const std::string& password) {
        for (size_t at = 0; (at = text.find('#', at)) != std::string::npos; at += password.size()) text.replace(at, 1, password);
        return text;
    };
    for (const std::string& row : rows) {
        for (const char* password : {"secret", "s,e)c(r;et", "\xC3\xA4%"})
            EXPECT_EQ(host::withoutSecrets(with(row, password)), with(row, "***"));
    }
    // What a database takes between user and host is more than other URLs may have there.
    const std::string databases[] = {
        "sink.url is \"postgresql://user:#@host:5432/trades?sslmode=require\"; allowed is x",
        "postgresql://user:#@a:1,b:2/d?sslpassword=*** is away",
        "postgres://user:#@host",
        "FATAL: postgresql://user@host:5432/d (a@b: no such role)",
        "\"postgresql://host:5432/d?user=u&password=***\", asked a@b",
    };
    for (const std::string& row : databases) {
        for (const char* password : {"secret", "s,e)c(r;et", "a/b", "a?b#c", "a\"b", "p@ss", "a://b:c", "a b"})
            EXPECT_EQ(host::withoutSecrets(with(row, password)), with(row, "***"));
    }
    // Where an option or a text has quotes of its own, more may be part of it.
    const std::string quoted = R"(host.jvmOptions has "-Dx.password=#"; allowed is x.)";
    for (const char* password : {"a b", "a&b=c", "a\"b", "a,b:c"})
        EXPECT_EQ(host::withoutSecrets(with(quoted, password)), with(quoted, "***"));
}

TEST(Console, EscapesWhatWouldSteerATerminal) {
    const std::pair<std::string, const char*> rows[] = {
        {std::string("a\0\t\n\x1B[2J\x7F", 9), R"(a\x00\t\n\x1B[2J\x7F)"},
        {"\xC2\x80 \xC2\x9Bm \xC2\x9F \x9Bm", R"(\u0080 \u009Bm \u009F \u009Bm)"},
        {"\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAA\xE2\x80\xAE", R"(\u2028\u2029\u202A\u202E)"},
        {"\xE2\x81\xA6\xE2\x81\xA9", R"(\u2066\u2069)"},
        {"\xC2\xA0\xC3\x9B\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5\xE2\x81\xAA\xF0\x9F\x98\x80",
         "\xC2\xA0\xC3\x9B\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5\xE2\x81\xAA\xF0\x9F\x98\x80"},
    };
    for (const auto& [text, expected] : rows) EXPECT_EQ(host::oneLine(text), expected);
}

}  // namespace
