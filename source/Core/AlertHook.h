#pragma once
#include <string_view>

/** What shows an alert for Core: queued by whoever installs it, so that workers may call. Null: a log line. */
using AlertHook = void (*)(std::string_view message, std::string_view detail);
/** Any thread. */
void SetAlertHook(AlertHook hook) noexcept;
void ShowAlert(std::string_view message, std::string_view detail);
