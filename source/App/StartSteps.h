#pragma once

class CApp;

// Acts of the start that belong to no part. Main thread.

/** What a crash left in the temporary places, ours and those beside the files that we save. */
void PurgeLeftovers(CApp& app);
void LogHeadline(CApp& app);
void LogSystemFacts(CApp& app);
/** Without what the readers were written for, or what is installed beside the program, a show is impossible: the process
    ends with a fatal alert. */
void TestMediaLibrary(CApp& app);
void FindApplicationFolder(CApp& app);
/** The last act: the application is ready, and so are its parts. */
void MarkReady(CApp& app);
