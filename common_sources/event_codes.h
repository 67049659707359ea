#ifndef EVENT_CODES_H
#define EVENT_CODES_H

#include <cstdint>

/// Event codes of the device library. Compared as whole values; any negative code is a motion sample. The
/// codes of the view keys and the zoom key are in keys/special_functions.h.
constexpr std::int32_t kRotationSettingsEvent1 = 0x20001; // rotation settings to be read again
constexpr std::int32_t kRotationSettingsEvent2 = 0x20002;
constexpr std::int32_t kAnnounceModeEvent = 0x20013; // mode to be announced again

/// Code of the first application function; from here up, each code is a key.
constexpr std::int32_t APPL_FUNC_START = 0x20020;

#endif
