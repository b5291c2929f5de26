// The scanner against the documented patterns, run by PCRE without limits; and whole hostile messages.
//
// KEL_SOAK=1 in the environment (tools/soak sets it) makes the mutations many.
#include "jmsin/XmlScanner.h"

#include <pcre.h>
#include <pthread.h>

#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <random>

#include "tests/jmsin/AdapterFixture.h"

namespace {

// A pattern by itself.
class Peer {
public:
    explicit Peer(const char* pattern) : code_(pcre_compile(pattern, 0, &error_, &errorAt_, nullptr), pcre_free) {}

    std::optional<xml::Match> match(const std::string& text) const {
        int o[9];
        const int found = pcre_exec(code_.get(), nullptr, text.data(), static_cast<int>(text.size()), 0, 0, o, 9);
        const auto at = [&o](int index) { return static_cast<size_t>(o[index]); };
        return found == 3 ? std::optional(xml::Match{at(2), at(3), at(4), at(5), at(1)}) : std::nullopt;
    }

private:
    const char* error_ = nullptr;
    int errorAt_ = 0;
    std::unique_ptr<pcre, void (*)(void*)> code_;
};

const std::string kMessages[] = {
    R"(<Trades Symbol="IBM" Price="25.5" Shares="100" KEL_OPS="p"/>)",
    "<?xml version=\"1.0\"?>\n<Trades\n Symbol = \"a/>b\" x='1' />\n<Quotes A=\"1\"/>",
    "noise < <a <b\v_1=\"\"\t/> / > />",
    " Price\t=\n\"25.5\" Symbol=\"IBM\"",
};

TEST(XmlScanner, AgreesWithThePatternsOnMutations) {
    const Peer elementPeer(xml::kElement), attributePeer(xml::kAttribute);
    std::mt19937 random(20240229);
    const std::string kAlphabet = std::string("<>/=\"' \t\n\v\r_aZ9-\x80\xC3", 18) + '\0';
    const int rounds = std::getenv("KEL_SOAK") != nullptr ? 1'000'000 : 100'000;
    int elements = 0, attributes = 0;
    for (int round = 0; round < rounds; ++round) {
        std::string text = kMessages[random() % std::size(kMessages)];
        for (auto edits = random() % 6; edits > 0; --edits) {
            const std::string piece(random() % 3 > 0 ? 1 : 0, kAlphabet[random() % kAlphabet.size()]);
            text.replace(random() % (text.size() + 1), piece.empty() ? 1 + random() % 4 : random() % 2, piece);
        }
        const auto element = elementPeer.match(text), attribute = attributePeer.match(text);
        ASSERT_EQ(xml::findElement(text), element) << text;
        ASSERT_EQ(xml::findAttribute(text), attribute) << text;
        elements += element.has_value();
        attributes += attribute.has_value();
    }
    EXPECT_TRUE(elements > rounds / 5 && elements < rounds * 9 / 10 && attributes > rounds / 20) << "the mutations leave enough of both";
}

#if defined(__SANITIZE_ADDRESS__)
constexpr std::clock_t kMostSeconds = 20;
#else
constexpr std::clock_t kMostSeconds = 1;
#endif

using HostileXml = AdapterFixture;

// Whole messages of hostile shapes, in a thread with a small stack: an outcome soon, whatever the size.
TEST_F(HostileXml, EndsSoonInBoundedStack) {
    start("XML", {{"matchStreamName", "0"}});
    const auto parse = [this](std::string text) {
        const std::clock_t started = std::clock();  // of the processor: a busy machine does not count
        const bool parsed = adapter.parseXmlMessage(text, nullptr);
        EXPECT_LT(std::clock() - started, kMostSeconds * CLOCKS_PER_SEC);
        return parsed;
    };
    const auto repeated = [](std::string text, const std::string& shape, size_t size) {
        while (text.size() < size) text += shape;
        return text;
    };
    std::function<void()> parseAll = [&] {
        for (const size_t size : {size_t{1000}, size_t{2000}, size_t{8} << 20}) {
            for (const char* shape : {"<", "<a", " ", "<a ", "a=\"", "<a b=\"", "\n<a\n", "<a/\n", "<a\n/>", "<a \n"}) {
                for (const char* begin : {"", "<a", "  <a  "}) {
                    SCOPED_TRACE(testing::Message() << begin << shape << " " << size);
                    parse(repeated(begin, shape, size));
                    parse(repeated(begin, shape, size) + "/>");
                }
            }
            EXPECT_TRUE(parse(repeated("<T ", "A=\"1\" ", size) + "/>"));
            EXPECT_FALSE(parse(repeated("<T ", "A=\"1\" ", size) + "B/>"));
            EXPECT_TRUE(parse(repeated("<T A=\"", "x", size) + "\"/>"));
            EXPECT_FALSE(parse(repeated("<T A=\"", "x", size) + "/>"));
        }
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    pthread_t thread;
    const auto run = [](void* work) -> void* { return (*static_cast<std::function<void()>*>(work))(), nullptr; };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &parseAll), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

}  // namespace
