#ifndef EVENT_CODES_H
#define EVENT_CODES_H

#include <cstdint>

/// Event codes of the device library. Compared as whole values; any negative code is a motion sample.
constexpr std::int32_t kRotationSettingsEvent1 = 0x20001; // rotation settings to be read again
constexpr std::int32_t kRotationSettingsEvent2 = 0x20002;
constexpr std::int32_t kViewFrontEvent = 0x20009;
constexpr std::int32_t kViewRightEvent = 0x2000A;
constexpr std::int32_t kViewTopEvent = 0x2000B;
constexpr std::int32_t kZoomAllEvent = 0x2000C;
constexpr std::int32_t kAnnounceModeEvent = 0x20013; // mode to be announced again
constexpr std::int32_t kViewBackEvent = 0x20016;
constexpr std::int32_t kViewLeftEvent = 0x20017;
constexpr std::int32_t kViewBottomEvent = 0x20018;

/// Code of the first application function; from here up, each code is a key.
constexpr std::int32_t APPL_FUNC_START = 0x20020;

#endif
