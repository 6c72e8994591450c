// A save may be cut off anywhere: the file is always one whole version, the old or the new.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>

#include "files/TextFiles.h"

namespace {

// Longer than what is written at once; each version has a length of its own.
std::string contentOf(unsigned version) {
    std::string content;
    for (unsigned row = 0; row < 2000 + version % 100; ++row) {
        content += std::to_string(version) + "\n";
    }
    return content;
}

bool save(const std::string& path, unsigned version) {
    std::FILE* file = BeginReplacing(path.c_str());
    return file && std::fputs(contentOf(version).c_str(), file) >= 0 && EndReplacing(file, path.c_str());
}

}  // namespace

TEST(SaveKill, LeavesAWholeVersionWhereverASaveIsCutOff) {
    constexpr int Wanted = 100;
    std::string folder = testing::TempDir() + "save-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string path = folder + "/kept.vr2";
    const auto start = std::chrono::steady_clock::now();
    unsigned last = 0;
    while (last < 10) {
        ASSERT_TRUE(save(path, ++last));
    }
    // In the first saves of each process, however fast the disk is.
    const std::chrono::nanoseconds tenSaves = std::chrono::steady_clock::now() - start;
    std::uniform_int_distribution<long> wait(0, tenSaves.count() * 3 / 10 + 1'000'000);
    std::mt19937 random(20240229);
    int cutOff = 0;
    int advanced = 0;
    for (int kills = 0; cutOff < Wanted || advanced < Wanted; ++kills) {
        ASSERT_LT(kills, 50 * Wanted) << cutOff << " hit a save, before " << advanced << " one got through";
        const pid_t saver = fork();
        ASSERT_GE(saver, 0);
        if (saver == 0) {
            for (unsigned version = last + 1; save(path, version); ++version) {
            }
            _exit(1);
        }
        std::this_thread::sleep_for(std::chrono::nanoseconds(wait(random)));
        kill(saver, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(saver, &status, 0), saver);
        ASSERT_TRUE(WIFSIGNALED(status)) << "a save failed";

        std::ifstream file(path, std::ios::binary);
        const std::string content{std::istreambuf_iterator<char>(file), {}};
        const auto version = static_cast<unsigned>(std::strtoul(content.c_str(), nullptr, 10));
        ASSERT_TRUE(content == contentOf(version)) << "after kill " << kills;
        ASSERT_GE(version, last);
        advanced += version > last ? 1 : 0;
        last = version;
        cutOff += std::filesystem::exists(path + ".part") ? 1 : 0;
    }
    std::filesystem::remove_all(folder);
}
