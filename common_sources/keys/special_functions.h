#ifndef SPECIAL_FUNCTIONS_H
#define SPECIAL_FUNCTIONS_H

#include <cstdint>

/// A view key or the zoom key, and what is typed for it. The apostrophe marks a transparent command: a
/// running command goes on.
struct SpecialFunction {
  std::int32_t eventCode;
  const wchar_t* text;   // typed in 3D
  const wchar_t* text2D; // typed on a layout; null: nothing, since a layout has no views to choose from
  bool isView;           // a zoom follows if the device's settings ask for it
};

constexpr wchar_t kZoomAll[] = L"'_ZOOM _ALL ";

constexpr SpecialFunction kSpecialFunctions[] = {
    {0x20009, L"'_-VIEW _FRONT ", nullptr, true},  {0x2000A, L"'_-VIEW _RIGHT ", nullptr, true},
    {0x2000B, L"'_-VIEW _TOP ", nullptr, true},    {0x2000C, kZoomAll, L"_ZOOM _ALL ", false},
    {0x20016, L"'_-VIEW _BACK ", nullptr, true},   {0x20017, L"'_-VIEW _LEFT ", nullptr, true},
    {0x20018, L"'_-VIEW _BOTTOM ", nullptr, true},
};

/// Returns the row of an event code, null if there is none.
constexpr const SpecialFunction* findSpecialFunction(std::int32_t eventCode) {
  for (const SpecialFunction& function : kSpecialFunctions) {
    if (function.eventCode == eventCode)
      return &function;
  }
  return nullptr;
}

#endif
