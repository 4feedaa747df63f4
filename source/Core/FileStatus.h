#pragma once
#include "Platform/OSErr.h"

/** The status of the file manager that an `errno` stands for; the number itself where there is none. */
OSErr StatusOfErrno(int errorL) noexcept;
