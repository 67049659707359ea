#ifndef SETTINGS_PARAMETERS_H
#define SETTINGS_PARAMETERS_H

#include "parameter.h"
#include "settings.h"

// What the settings file is made of. Its second section is in log_parameters.h.
constexpr char kSettingsHead[] = "# Configuration file for Orvaner's AutoCAD plug-in\n\n";
constexpr char kProgramSection[] = "PROGRAM";
constexpr int kValueWidth = 50; // columns that a value takes

/// The keys of the first section, in the order of the file.
inline constexpr Parameter<Settings> kProgramParameters[] = {
    {"name", &Settings::mName, "(AutoCAD Plug-in) mName", "AutoCAD Plug-in", "# program's name"},
    {"version", &Settings::mVersion, "mVersion", "2.9.0", "# program's version number"},
    {"transSensBase", &Settings::mTraSensBase, "mTraSensBase", "20000",
     "# base sensitivity divisor for translation"},
    {"rotSensBase", &Settings::mRotSensBase, "mRotSensBase", "10000",
     "# base sensitivity divisor for rotation"},
    {"minThreshold", &Settings::mMinThreshold, "mMinThreshold", "0",
     "# minimal threshold (overrides setting in control panel)"},
    {"maxContMoveTime", &Settings::mMaxContMoveTime, "mMaxContMoveTime", "500",
     "# maximal time for continuous cap movement in milliseconds"},
    {"toggleRotationCenter", &Settings::mToggleRotationCenter, "mToggleRotationCenter", "on",
     "# if true a selected object will define the rotation center"},
    {"toggleRotationAxis", &Settings::mToggleRotationAxis, "mToggleRotationAxis", "off",
     "# if true a selected line will define the rotation axis"},
    {"scrollTreeAndList", &Settings::mScrollTreeAndList, "mScrollTreeAndList", "on",
     "# scroll trees and lists within Catia if the mouse is above (on/off)"},
    {"useInt3dIntrfce", &Settings::mUseInt3dIntrfce, "mUseInt3dIntrfce", "off",
     "# if true no rotations/translations are done by this plugin; the Omnibus Plug-in must be used "
     "instead."},
};

#endif
