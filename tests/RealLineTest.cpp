// A whole session on the computer's own clock, against a simulated controller on a pseudo-terminal at the true pace:
// what held time and a held line cannot show.
#include "TuningPages.h"
#include "shell/MainWindow.h"
#include "simulator/Server.h"

TEST(RealLine, AVisitToTheCarReadsWritesLosesAndFindsIt) {
    const ProgramFolder place;
    simulator::Config config;
    config.portLink = place.path / "ports/COM1";
    simulator::Server server(config);
    const auto held = [&](int cell) {
        return server.with([=](simulator::Controller& controller) { return controller.cells.get(cell); });
    };
    place.writeIni(1, "ang");
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(pumpUntil([] { return LinkLost == 0 && LiveBlock[0] != 0; }));
    SendMessageA(MainWindow, WM_COMMAND, IDM_OPTIONS, 0);
    ASSERT_TRUE(pumpUntil([] { return selected(1044) == 60; })) << "the factory's value";

    clickOn(control(1044));
    ASSERT_TRUE(pumpUntil([] { return ComboOpen == 1; }));
    clickEntry(50);
    EXPECT_TRUE(pumpUntil([&] { return held(simulator::AttMin) == 50 && selected(1044) == 50; }));
    clickOn(control(1041));
    EXPECT_TRUE(pumpUntil([&] { return (held(simulator::Options) & simulator::LimitOn) == 0; }));

    server.unplug();
    EXPECT_TRUE(pumpUntil([] { return LinkLost == 1 && ParamBlockB[2] == 0; }));
    EXPECT_FALSE(std::filesystem::exists(config.portLink));
    ASSERT_TRUE(server.replug());
    EXPECT_TRUE(pumpUntil([] { return LinkLost == 0 && selected(1044) == 50; }));
    PostMessageA(MainWindow, WM_CLOSE, 0, 0);
    EXPECT_EQ(RunMessageLoop(), 0);
}
