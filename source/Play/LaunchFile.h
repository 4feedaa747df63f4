#pragma once
#include "Files/CFileRef.h"

/** Hands a file to the program that the desktop has for it; does not wait for it. Any thread. */
OSErr LaunchFile(const CFileRef& file);
