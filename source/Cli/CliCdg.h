#pragma once
#include "Graphics/CDGConstants.h"

struct CliCall;

/** Times up to here have exact packet numbers. */
inline constexpr double kCdg_MostSeconds = 9007199254740992.0 / kSubCodePacketsPerSecond;

/** `cdg frame`. */
int MakeCdgFrame(const CliCall& call);
/** `cdg info`. */
int ShowCdgInfo(const CliCall& call);
/** `cdg bench`. */
int BenchCdg(const CliCall& call);
