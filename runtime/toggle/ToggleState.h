#pragma once

#include <string_view>

// One feature toggle: the value of `toggleName` in the JSON object of `jsonFileName`
// (name to bool) in the directory named by VEK_TOGGLE_DIR. A missing directory, file or
// name gives `defaultValue`; a file or value that is not what it should be is traced
// and gives it too. An override set by the host wins over any file.
bool getToggleState(const char* toggleName, const char* jsonFileName, bool defaultValue);

namespace Toggle {

// The host's and the tests' say over a toggle, by name, whatever file it is read from.
void overrideIs(std::string_view toggleName, bool value);
void overrideDel(std::string_view toggleName);
void overrideDelAll();

}  // namespace Toggle
