// The linear scanners against the patterns themselves, run by PCRE without limits.
#include "jmsin/XmlPatterns.h"

#include <pthread.h>
#include <time.h>

#include <chrono>
#include <map>
#include <memory>
#include <random>

#include "tests/jmsin/AdapterFixture.h"

namespace {

std::optional<xml::Match> byPattern(const std::string& pattern, const std::string& text) {
    const auto release = [](pcre* code) { pcre_free(code); };
    static std::map<std::string, std::unique_ptr<pcre, decltype(release)>> compiled;
    const char* error = nullptr;
    int errorAt = 0;
    auto& code = compiled[pattern];
    if (!code) code.reset(pcre_compile(pattern.c_str(), 0, &error, &errorAt, nullptr));
    int o[9];
    const int found = pcre_exec(code.get(), nullptr, text.data(), static_cast<int>(text.size()), 0, 0, o, 9);
    if (found != 3) return std::nullopt;
    return xml::Match{static_cast<size_t>(o[2]), static_cast<size_t>(o[3]), static_cast<size_t>(o[4]), static_cast<size_t>(o[5]),
                      static_cast<size_t>(o[1])};
}

const std::string kMessages[] = {
    R"(<Trades Symbol="IBM" Price="25.5" Shares="100" KEL_OPS="p"/>)",
    "<?xml version=\"1.0\"?>\n<Trades\n Symbol = \"a/>b\" x='1' />\n<Quotes A=\"1\"/>",
    "noise < <a <b\v_1=\"\"\t/> / > />",
    " Price\t=\n\"25.5\" Symbol=\"IBM\"",
};

TEST(XmlPatterns, ScannersAgreeWithThePatternsOnMutations) {
    std::mt19937 random(20240229);
    const std::string kAlphabet = std::string("<>/=\"' \t\n\v\r_aZ9-\x80\xC3", 18) + '\0';
    int elements = 0;
    int attributes = 0;
    for (int round = 0; round < 100000; ++round) {
        std::string text = kMessages[random() % std::size(kMessages)];
        for (unsigned long edits = random() % 6; edits > 0; --edits) {
            const size_t at = random() % (text.size() + 1);
            switch (random() % 3) {
                case 0:
                    text.insert(at, 1, kAlphabet[random() % kAlphabet.size()]);
                    break;
                case 1:
                    text.erase(at, 1 + random() % 4);
                    break;
                default:
                    if (at < text.size()) text[at] = kAlphabet[random() % kAlphabet.size()];
            }
        }
        const auto element = byPattern(xml::kElement, text);
        const auto attribute = byPattern(xml::kAttribute, text);
        ASSERT_EQ(xml::scanElement(text), element) << text;
        ASSERT_EQ(xml::scanAttribute(text), attribute) << text;
        elements += element.has_value();
        attributes += attribute.has_value();
    }
    EXPECT_GT(elements, 20000);  // the mutations leave enough of both
    EXPECT_LT(elements, 90000);
    EXPECT_GT(attributes, 5000);
}

TEST(XmlPatterns, TextsBeyondTheLimitsGiveTheSameGroups) {
    const xml::Pattern element(xml::kElement, xml::scanElement);
    const xml::Pattern attribute(xml::kAttribute, xml::scanAttribute);
    for (const size_t length : {10U, 900U, 1000U, 1100U, 2000U, 2048U, 2049U, 9000U}) {
        const std::string value = "A=\"" + std::string(length, 'x') + "\"";
        const std::string text = "  <T " + value + "/>";
        EXPECT_EQ(element.match(text), byPattern(xml::kElement, text)) << length;
        EXPECT_EQ(attribute.match(value), byPattern(xml::kAttribute, value)) << length;
        ASSERT_TRUE(element.match(text) && attribute.match(value));
    }
}

}  // namespace

// Whole messages of hostile shapes, in a thread with a small stack: an outcome soon, whatever the size.
class HostileXml : public AdapterFixture {
public:
    bool parse(const std::string& text) {
        std::string copy = text;
        const std::chrono::nanoseconds started = processorTime();
        const bool parsed = adapter.parseXmlMessage(copy, nullptr);
        EXPECT_LT(processorTime() - started, kLimit);
        return parsed;
    }
    void parseAll();
    // Of this thread: a busy machine does not count.
    static std::chrono::nanoseconds processorTime() {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    }
#if defined(__SANITIZE_ADDRESS__)
    static constexpr std::chrono::seconds kLimit{20};
#else
    static constexpr std::chrono::seconds kLimit{1};
#endif
};

void HostileXml::parseAll() {
    const auto repeated = [](const std::string& begin, const std::string& shape, size_t size) {
        std::string text = begin;
        while (text.size() < size) text += shape;
        return text;
    };
    const char* const kShapes[] = {"<", "<a", " ", "<a ", "a=\"", "<a b=\"", "\n<a\n", "<a/\n", "<a\n/>", "<a \n"};
    for (const size_t size : {size_t{1000}, size_t{2000}, size_t{8} << 20}) {
        for (const char* shape : kShapes) {
            for (const char* begin : {"", "<a", "  <a  "}) {
                SCOPED_TRACE(testing::Message() << begin << shape << " " << size);
                parse(repeated(begin, shape, size));
                parse(repeated(begin, shape, size) + "/>");
            }
        }
        // Fewer attributes: the fake toolkit keeps book of each.
        const size_t fewer = std::min(size, size_t{1} << 19);
        EXPECT_TRUE(parse(repeated("<T ", "A=\"1\" ", fewer) + "/>"));
        EXPECT_FALSE(parse(repeated("<T ", "A=\"1\" ", fewer) + "B/>"));
        EXPECT_TRUE(parse(repeated("<T A=\"", "x", size) + "\"/>"));
        EXPECT_FALSE(parse(repeated("<T A=\"", "x", size) + "/>"));
    }
}

TEST_F(HostileXml, EndsSoonInBoundedStack) {
    start("XML", {{"matchStreamName", "0"}});
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    pthread_t thread;
    const auto run = [](void* self) -> void* {
        static_cast<HostileXml*>(self)->parseAll();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, this), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}
