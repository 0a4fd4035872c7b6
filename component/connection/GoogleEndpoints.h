// The Google origins the connectors speak to, without a trailing slash: each use appends its
// own path. They are the real addresses; a host that routes elsewhere does so by origin.
#pragma once

inline constexpr wchar_t gszGoogleAccounts[] = L"https://accounts.google.com";
inline constexpr wchar_t gszGoogleAPI[] = L"https://www.googleapis.com";
inline constexpr wchar_t gszGoogleFeeds[] = L"https://www.google.com";
inline constexpr wchar_t gszGoogleDocumentsFeeds[] = L"https://docs.google.com";
inline constexpr wchar_t gszGoogleDocumentsContenu[] = L"https://docs.googleusercontent.com";
inline constexpr wchar_t gszGoogleSpreadsheetsFeeds[] = L"https://spreadsheets.google.com";
inline constexpr wchar_t gszGooglePicasa[] = L"https://picasaweb.google.com";
