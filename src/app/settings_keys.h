#pragma once
// The keys of the defaults store and their defaults. Booleans marked "text" are kept as the
// text "1" or "0", so that an absent key can be told from false.

#include <cstdint>
#include <string_view>

namespace nuvrel::app::settingsKey {

inline constexpr std::string_view lang = "lang";                        // text raw value
inline constexpr std::string_view appearance = "appearance";            // "dark" or "light"
inline constexpr std::string_view modelFile = "modelFile";              // text
inline constexpr std::string_view hotkeyKeyCode = "hotkeyKeyCode";      // integer
inline constexpr std::string_view hotkeyModifiers = "hotkeyModifiers";  // integer
inline constexpr std::string_view searxngEndpoint = "searxngEndpoint";  // text
// Base URLs of the weather and rate services ("https://api.open-meteo.com"), text.
inline constexpr std::string_view openMeteoGeocodingEndpoint = "openMeteoGeocodingEndpoint";
inline constexpr std::string_view openMeteoForecastEndpoint = "openMeteoForecastEndpoint";
inline constexpr std::string_view frankfurterEndpoint = "frankfurterEndpoint";
inline constexpr std::string_view networkFeaturesEnabled = "networkFeaturesEnabled";    // text
inline constexpr std::string_view memorySavingModeEnabled = "memorySavingModeEnabled";  // text
inline constexpr std::string_view modelUpdateCheckEnabled = "modelUpdateCheckEnabled";  // text
inline constexpr std::string_view onboardingCompleted = "onboardingCompleted";          // boolean
inline constexpr std::string_view hasCompletedFirstQuery = "hasCompletedFirstQuery";    // text "1"
inline constexpr std::string_view modelDownloadedOnFirstRun = "modelDownloadedOnFirstRun";
inline constexpr std::string_view modelUpdateLastCheck = "modelUpdateLastCheck";
inline constexpr std::string_view onDevice = "onDevice";  // boolean, written true at every start
// Calendar and reminder folders (vdir, one ".ics" per item); text, empty or absent for the
// folders under $XDG_DATA_HOME/nuvrel/.
inline constexpr std::string_view calendarFolders = "calendarFolders";  // ":"-separated paths
inline constexpr std::string_view newEventCalendarFolder = "newEventCalendarFolder";
inline constexpr std::string_view reminderFolder = "reminderFolder";
// The notes folder (Markdown files) and the contacts folder (vCards, khard's vdir layout);
// text, empty or absent for the folders under $XDG_DATA_HOME/nuvrel/.
inline constexpr std::string_view notesFolder = "notesFolder";
inline constexpr std::string_view contactsFolder = "contactsFolder";
// A base URL whose scheme, host and port replace those of the model and manifest addresses.
inline constexpr std::string_view modelMirror = "modelMirror";  // text
// The update last offered, as its manifest entry (JSON text); kept until the user acts on it.
inline constexpr std::string_view modelUpdateOffer = "modelUpdateOffer";  // text

// Option+Space.
inline constexpr std::uint32_t defaultHotkeyKeyCode = 49;
inline constexpr std::uint32_t defaultHotkeyModifiers = 2048;

}  // namespace nuvrel::app::settingsKey
