#include "CommandLineParser.h"
#include "ManualPage.h"
#include "ShellCompletions.h"

#include <cstdio>
#include <fstream>
#include <string>

using namespace tessly;

namespace {

bool write(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) {
        std::fprintf(stderr, "could not write %s\n", path.c_str());
    }
    return static_cast<bool>(file);
}

} // namespace

/// Writes what is made from the description of the command line into a folder.
int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const std::string folder = std::string(argv[1]) + '/';
    const bool isWritten = write(folder + "tessly.1", manualPage(programVersion().toStdString())) &&
                           write(folder + "tessly.bash", bashCompletion()) &&
                           write(folder + "_tessly", zshCompletion()) &&
                           write(folder + "tessly.fish", fishCompletion());
    return isWritten ? 0 : 1;
}
