#include "host/process/Installation.h"

#include <cstdlib>

#include "host/process/Failure.h"
#include "host/values/Text.h"

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr char kPlugin[] = "libkel_adapter_jms_in_lib.so";
constexpr char kCatalogue[] = "etc/messages/en.txt";

// Below the prefix: the build tree's places first, then those of an installation.
constexpr const char* kPluginFolders[] = {"", KEL_INSTALL_LIBDIR, "lib"};
constexpr char kInstalledHome[] = KEL_INSTALL_DATADIR "/kel";
constexpr const char* kJarFolders[] = {"connector", "examples/converter", KEL_INSTALL_DATADIR "/java"};
constexpr char kDistributionJars[] = "/usr/share/java";

const char* kelHome() {
    const char* home = std::getenv("KEL_HOME");
    return home != nullptr ? home : "";
}

// What KEL_HOME is when nothing else is said.
fs::path ownHome() {
    const fs::path installed = prefix() / kInstalledHome;
    return isThere(installed / kCatalogue) ? installed : prefix();
}

}  // namespace

bool isThere(const fs::path& file) {
    std::error_code error;
    return fs::exists(file, error);
}

fs::path prefix() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error)
        throw Failure("The program cannot find its own file: /proc/self/exe: " + error.message() + ".");
    return program.parent_path().parent_path();
}

fs::path pluginFile() {
    std::string tried;
    for (const char* folder : kPluginFolders) {
        fs::path file = prefix() / folder / kPlugin;
        if (isThere(file)) return file;
        addToList(tried, file.parent_path().string());
    }
    throw Failure(std::string("The plug-in ") + kPlugin + " is in none of " + tried +
                  "; name its file with --plugin or with plugin in the section [host].");
}

fs::path dictionaryFile(const std::string& fixVersion) {
    const fs::path home = *kelHome() != '\0' ? fs::path(kelHome()) : ownHome();
    return home / "etc/fix" / ("dictionary" + fixVersion + ".txt");
}

fs::path catalogueFile() {
    const fs::path ofHome = fs::path(kelHome()) / kCatalogue;
    return *kelHome() != '\0' && isThere(ofHome) ? ofHome : ownHome() / kCatalogue;
}

fs::path findJar(const std::string& name) {
    for (const char* folder : kJarFolders) {
        fs::path file = prefix() / folder / name;
        if (isThere(file)) return file;
    }
    fs::path file = fs::path(kDistributionJars) / name;
    return isThere(file) ? file : fs::path(name);
}

void provideKelHome() {
    if (*kelHome() == '\0') ::setenv("KEL_HOME", ownHome().c_str(), 1);
}

}  // namespace host
