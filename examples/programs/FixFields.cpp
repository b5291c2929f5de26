// FixFields VERSION < MESSAGES: writes the fields of FIX messages, one a line, under the names that the
// dictionary of the version has for them. KEL_HOME names the folder above etc/fix; PREFIX/share/kel has one.
#include <cstdio>
#include <iostream>
#include <string>

#include "fix/NewFixUtils.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "FixFields VERSION < MESSAGES: VERSION is one such as 4.4.\n");
        return 2;
    }
    NewFixUtils fix;  // bound to no adapter, so it reports nothing by itself
    if (!fix.makeDictionary(argv[1])) {
        std::fprintf(stderr, "There is no etc/fix/dictionary%s.txt below KEL_HOME.\n", argv[1]);
        return 1;
    }
    for (std::string message; std::getline(std::cin, message);) {
        NewFixUtils::FieldMap fields;
        fix.parseFixMessage(message, fields);
        for (const auto& [tag, value] : fields) {
            std::string name = tag;  // stays where the dictionary has none
            fix.fieldNameByTag(tag, name);
            std::printf("%s=%s ", name.c_str(), value.c_str());
        }
        std::printf("\n");
    }
}
