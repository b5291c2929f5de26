// Where this program lies and what lies beside it, in the build tree as well as installed.
#pragma once

#include <filesystem>
#include <string>

namespace host {

// False also where the system cannot tell, of a name that is too long say; the standard library throws then.
bool isThere(const std::filesystem::path& file);

// The folder above the program's own: the install prefix, or the build folder.
std::filesystem::path prefix();

// The plug-in belonging to this program; throws Failure when it is not there.
std::filesystem::path pluginFile();

// What the adapter reads the FIX fields of a version from: below KEL_HOME, else below this program's own
// home, which is share/kel of an installation and the build folder.
std::filesystem::path dictionaryFile(const std::string& fixVersion);

// The message catalogue: below KEL_HOME, else below this program's own home.
std::filesystem::path catalogueFile();

// The jar of that file name in the places where this program and the distribution keep jars; the bare name
// when there is none.
std::filesystem::path findJar(const std::string& name);

// Sets KEL_HOME to this program's own home when it is unset or empty. Before there are threads that ask for
// it.
void provideKelHome();

}  // namespace host
