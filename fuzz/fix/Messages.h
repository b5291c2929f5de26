// Random message texts from a fixed seed: pieces that the rules treat differently, then single bytes changed.
// Now and then a long one.
#pragma once

#include <random>
#include <sstream>
#include <string>
#include <vector>

class Messages {
public:
    std::string next() {
        std::string text;
        for (unsigned count = pick(100) == 0 ? 300 : pick(30); count > 0; --count)
            text += pieces_[pick(pieces_.size())] + '\x01';
        if (!text.empty() && pick(3) == 0) text.pop_back();
        for (unsigned count = pick(4) == 0 ? 3 : 0; count > 0 && !text.empty(); --count)
            text[pick(text.size())] = "\x01=589 \xFF"[pick(7)];
        return text;
    }

private:
    unsigned pick(size_t below) { return static_cast<unsigned>(random_() % below); }

    static std::vector<std::string> split(const std::string& text) {
        std::vector<std::string> pieces;
        std::istringstream rest(text);
        for (std::string piece; std::getline(rest, piece, '|');) pieces.push_back(piece);
        return pieces;
    }

    // Those of a valid message several times, so that enough of the texts are valid.
    const std::vector<std::string> pieces_ = split(
        "8=FIX.4.4|8=FIX.4.4|8=FIX.4.4|8=FIX.4.4|8=FIX.4.2|8=FIX|8=FIXT.1.1|35=D|35=D|35=D|35=8|35=|49=BUY|"
        "52=20240215-14:30:15.123|11=ORD-1|55=IBM|55=|38=100|44=1.5|44=1=2|58=caf\xC3\xA9 \xFF|=x|=|abc||"
        "word=w|055=leading zero|55 =space|65537=big|4294967351=wraps to "
        "55|123456789=long|1234567=a|1234568=b|10=064|58=" +
        std::string(200, 'x') + std::string("|5\0005=zero|55=a\0b", 16));
    std::mt19937 random_{20240215};
};
