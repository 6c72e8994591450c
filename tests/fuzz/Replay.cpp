// Runs the fuzzer's target over files, and over all files of folders, given as arguments.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int replayed = 0;

void replay(const std::filesystem::path& path) {
    if (std::filesystem::is_directory(path)) {
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            replay(entry.path());
        }
        return;
    }
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    std::printf("%s, %zu bytes\n", path.c_str(), content.size());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
    replayed += file.good() || file.eof() ? 1 : 0;
}

}  // namespace

int main(int count, char** arguments) {
    for (int at = 1; at < count; ++at) {
        replay(arguments[at]);
    }
    std::printf("%d replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
