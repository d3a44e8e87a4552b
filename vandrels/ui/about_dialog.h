// The about box: the library's version, the host generation it is built for, and a link to the product's web
// page.
#pragma once

namespace vandrels {

// What the about box writes into its version text and beside "For 3ds Max".
inline constexpr const wchar_t* kVersionText = L"1.12.02";
inline constexpr const wchar_t* kHostGenerationText = L"2026";
// The page the about box's link opens in the default browser.
inline constexpr const wchar_t* kProductWebPage = L"https://vandrels.example.com/";

// Runs the about box modally, centred on the host's main window, until OK or its close button.
void ShowAbout();

}  // namespace vandrels
