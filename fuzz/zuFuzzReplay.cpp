// Runs a fuzz target, built without libFuzzer, over the inputs named on the command line:
// files, or folders of files. A file named *.hex holds its input as hexadecimal digits after
// its comment lines (starting with '#'), so that a finding is kept as text beside the words
// that explain it. The target aborts on a finding; otherwise this prints what it ran.

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

std::vector<uint8_t> input(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (path.extension() != ".hex")
        return bytes;
    std::vector<uint8_t> decoded;
    std::istringstream lines(std::string(bytes.begin(), bytes.end()));
    std::string digits;
    for (std::string line; std::getline(lines, line);)
        if (line.empty() || line[0] != '#')
            for (char c : line)
                if (std::isxdigit(static_cast<unsigned char>(c)) && (digits += c).size() == 2) {
                    decoded.push_back(static_cast<uint8_t>(std::stoul(digits, nullptr, 16)));
                    digits.clear();
                }
    return decoded;
}

} // namespace

int main(int argc, char** argv)
{
    size_t runs = 0;
    for (int i = 1; i < argc; ++i) {
        std::vector<std::filesystem::path> paths{argv[i]};
        if (std::filesystem::is_directory(paths[0]))
            paths.assign(std::filesystem::directory_iterator(argv[i]), std::filesystem::directory_iterator());
        for (const auto& path : paths) {
            const std::vector<uint8_t> bytes = input(path);
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++runs;
        }
    }
    std::printf("%zu inputs ran\n", runs);
    return 0;
}
