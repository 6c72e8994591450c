#include "shell/SizeProfiles.h"

#include <array>

#include "model/Text.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/Language.h"
#include "shell/Pages.h"

namespace {

// Height of the cell and average width of a character, in pixels.
struct FontSize {
    int height;
    int width;
};

struct Box {
    int x;
    int y;
    int width;
    int height;
};

struct Profile {
    UINT menuItem;
    int width;
    int height;
    double scaleX;
    double scaleY;
    int panelLeft;
    int panelTop;
    int panelRight;
    int panelBottom;
    std::array<int, 4> panelX;
    int indicatorSize;
    FontSize large;
    FontSize small;
    Box learnButton;
};

constexpr int ProfileCount = 5;
constexpr std::array<Profile, ProfileCount> Profiles = {{
    {IDM_SIZE_640X480,
     640,
     450,
     0.8,
     0.77,
     0,
     123,
     57,
     142,
     {113, 172, 231, 290},
     22,
     {28, 11},
     {14, 6},
     {540, 358, 71, 30}},
    {IDM_SIZE_800X600,
     800,
     570,
     1.0,
     1.0,
     0,
     160,
     72,
     185,
     {140, 214, 288, 362},
     30,
     {36, 14},
     {18, 8},
     {685, 465, 80, 40}},
    {IDM_SIZE_1024X768,
     1024,
     738,
     1.28,
     1.32,
     0,
     211,
     92,
     243,
     {180, 274, 368, 462},
     40,
     {49, 18},
     {18, 8},
     {875, 610, 105, 60}},
    {IDM_SIZE_1280X960,
     1280,
     930,
     1.6,
     1.69,
     0,
     268,
     115,
     313,
     {225, 343, 461, 579},
     50,
     {62, 23},
     {24, 12},
     {1100, 780, 120, 75}},
    {IDM_SIZE_1280X1024,
     1280,
     994,
     1.6,
     1.81,
     0,
     288,
     115,
     335,
     {225, 343, 461, 579},
     55,
     {65, 23},
     {24, 12},
     {1100, 840, 120, 75}},
}};

struct DesktopRule {
    int width;
    int height;
    int profile;
};

// The first rule that a desktop meets decides.
constexpr std::array<DesktopRule, ProfileCount> DesktopRules = {{
    {1280, 1024, 5},
    {1280, 960, 4},
    {1024, 0, 3},
    {800, 0, 2},
    {0, 0, 1},
}};

constexpr int LargeWeight = 600;
constexpr int SmallWeight = 300;
// A desktop that is not wider than the window by more than this gets the window in its corner.
constexpr int CentringMargin = 50;

constexpr std::array<BYTE, 2> CharSets = {EASTEUROPE_CHARSET, RUSSIAN_CHARSET};

struct FontPair {
    HFONT large;
    HFONT small;
};
// By profile and character set.
std::array<std::array<FontPair, CharSets.size()>, ProfileCount> Fonts{};

const Profile& CurrentProfile() {
    return Profiles[static_cast<size_t>(SizeProfile - 1)];
}

HFONT MakeFont(FontSize size, int weight, BYTE charSet) {
    LOGFONTA font{};
    font.lfHeight = size.height;
    font.lfWidth = size.width;
    font.lfWeight = weight;
    font.lfCharSet = charSet;
    font.lfPitchAndFamily = FF_SWISS | DEFAULT_PITCH;
    CopyText(font.lfFaceName, "Arial");
    return CreateFontIndirectA(&font);
}

}  // namespace

int ProfileForDesktop(int width, int height) {
    for (const DesktopRule& rule : DesktopRules) {
        if (width >= rule.width && height >= rule.height) {
            return rule.profile;
        }
    }
    return 1;
}

void CreateFonts() {
    for (size_t profile = 0; profile < Profiles.size(); ++profile) {
        for (size_t set = 0; set < CharSets.size(); ++set) {
            Fonts[profile][set] = {MakeFont(Profiles[profile].large, LargeWeight, CharSets[set]),
                                   MakeFont(Profiles[profile].small, SmallWeight, CharSets[set])};
        }
    }
}

void SetSizeProfile(int profile) {
    SizeProfile = profile;
    ProfileWidth = CurrentProfile().width;
    ProfileHeight = CurrentProfile().height;
}

void ChooseSize(int profile) {
    SetSizeProfile(profile);
    RebuildPage();
}

void ApplySizeProfile() {
    for (const Profile& row : Profiles) {
        const UINT check = row.menuItem == CurrentProfile().menuItem ? MF_CHECKED : MF_UNCHECKED;
        CheckMenuItem(MainMenu, row.menuItem, MF_BYCOMMAND | check);
    }
    const Profile& profile = CurrentProfile();
    ScaleX = profile.scaleX;
    ScaleY = profile.scaleY;
    PanelLeft = profile.panelLeft;
    PanelTop = profile.panelTop;
    PanelRight = profile.panelRight;
    PanelBottom = profile.panelBottom;
    PanelX = profile.panelX;
}

void EnableSizeMenu(int allowed) {
    AllowedProfile = allowed;
    if (allowed < 1 || allowed > ProfileCount) {
        return;
    }
    for (int profile = 1; profile <= ProfileCount; ++profile) {
        const UINT state = profile <= allowed ? MF_ENABLED : MF_GRAYED;
        EnableMenuItem(MainMenu, Profiles[static_cast<size_t>(profile - 1)].menuItem, MF_BYCOMMAND | state);
    }
}

void ChooseFonts() {
    const size_t set = CurrentLanguage().charSet == RUSSIAN_CHARSET ? 1 : 0;
    const FontPair& pair = Fonts[static_cast<size_t>(SizeProfile - 1)][set];
    LargeFont = pair.large;
    SmallFont = pair.small;
    IndicatorSize = CurrentProfile().indicatorSize;
}

void PlaceLearnButton() {
    const Box& place = CurrentProfile().learnButton;
    SetWindowPos(GetDlgItem(PageWindow, IDC_LEARN), nullptr, place.x, place.y, place.width, place.height, 0);
}

void ReadDesktop() {
    GetWindowRect(GetDesktopWindow(), &DesktopRect);
}

void PlaceMainWindow() {
    const int spareWidth = DesktopRect.right - ProfileWidth;
    const bool centred = spareWidth > CentringMargin;
    const int x = centred ? spareWidth / 2 : 0;
    const int y = centred ? (DesktopRect.bottom - ProfileHeight) / 2 : 0;
    SetWindowPos(MainWindow, nullptr, x, y, ProfileWidth, ProfileHeight, 0);
}
