#include "Core/AlertHook.h"

#include <atomic>
#include <string>

#include "Core/CLog.h"

namespace {

std::atomic<AlertHook> s_hook{nullptr};

}   // namespace

void SetAlertHook(AlertHook hook) noexcept { s_hook.store(hook, std::memory_order_release); }

void ShowAlert(std::string_view message, std::string_view detail) {
    if (const AlertHook hook = s_hook.load(std::memory_order_acquire); hook != nullptr) return hook(message, detail);
    Log("Alert: " + std::string(message) + ": " + std::string(detail));
}
