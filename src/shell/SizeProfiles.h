// The five fixed window sizes and what hangs on them.
#pragma once

// The profile, 1 to 5, that suits a desktop of so many pixels.
int ProfileForDesktop(int width, int height);

// Makes the fonts of all profiles and character sets; they live until the process ends.
void CreateFonts();

// Sets SizeProfile, 1 to 5, with ProfileWidth and ProfileHeight.
void SetSizeProfile(int profile);

// A choice from the Size menu, 1 to 5: the window and the page take that size.
void ChooseSize(int profile);

// Checks the Size item of SizeProfile and sets the scale factors and the segments' places.
void ApplySizeProfile();

// Stores the highest profile that the desktop allows and, for 1 to 5, greys the Size items above it.
void EnableSizeMenu(int allowed);

// LargeFont, SmallFont and IndicatorSize by SizeProfile and LangCode.
void ChooseFonts();

// Puts control 1005 of the page at its place in pixels; nothing happens on a page without it.
void PlaceLearnButton();

// Reads DesktopRect.
void ReadDesktop();

// The profile's size, in the middle of DesktopRect if that is over 50 pixels wider, else in its corner.
void PlaceMainWindow();
