// A save may be cut off anywhere: the file is always one whole version, the old or the new.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>

#include "files/TextFiles.h"
#include "model/Blocks.h"
#include "settings/SettingsFormat.h"

namespace {

const SettingsFormat& format() {
    return SettingsFormatOf(Family4);
}

// The first three values are the version's bytes; all others change with it, in length too.
void fillMirrors(unsigned version) {
    std::minstd_rand random(version + 1);
    std::ranges::generate(ParamBlockB, [&] { return static_cast<BYTE>(random()); });
    std::ranges::generate(ParamBlockC, [&] { return static_cast<BYTE>(random()); });
    for (size_t at = 0; at < 3; ++at) {
        ParamBlockA[ParamAByte::Options + at] = static_cast<BYTE>(version >> (8 * at));
    }
}

bool save(const std::string& path, unsigned version) {
    fillMirrors(version);
    std::FILE* file = BeginReplacing(path.c_str());
    if (file) {
        WriteSettings(file, format());
    }
    return file && EndReplacing(file, path.c_str());
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string contentOfVersion(unsigned version) {
    fillMirrors(version);
    std::array<char, 2000> written{};
    std::FILE* file = fmemopen(written.data(), written.size(), "w");
    WriteSettings(file, format());
    std::fclose(file);
    return written.data();
}

unsigned versionIn(const std::string& path) {
    ScanSettings(std::fopen(path.c_str(), "r"), format());
    return CellImage[0] | CellImage[1] << 8u | CellImage[2] << 16u;
}

}  // namespace

TEST(SaveKill, LeavesAWholeVersionWhereverASaveIsCutOff) {
    constexpr int Wanted = 100;
    std::string folder = testing::TempDir() + "save-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string path = folder + "/kept.vr2";
    unsigned last = 0;
    auto saveTime = std::chrono::nanoseconds::max();
    for (; last < 10; ++last) {
        const auto start = std::chrono::steady_clock::now();
        ASSERT_TRUE(save(path, last + 1));
        saveTime = std::min<std::chrono::nanoseconds>(saveTime, std::chrono::steady_clock::now() - start);
    }

    // In the first saves of each process, however fast the disk is.
    std::mt19937 random(20240229);
    std::uniform_int_distribution<long> wait(0, 3 * saveTime.count() + 1'000'000);
    int kills = 0;
    int cutOff = 0;
    int advanced = 0;
    while (cutOff < Wanted || advanced < Wanted) {
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
        ++kills;

        const unsigned version = versionIn(path);
        ASSERT_EQ(contentOf(path), contentOfVersion(version)) << "after kill " << kills;
        ASSERT_GE(version, last);
        advanced += version > last ? 1 : 0;
        last = version;
        cutOff += std::filesystem::exists(path + ".part") ? 1 : 0;
    }
    std::filesystem::remove_all(folder);
}
