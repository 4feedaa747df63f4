#pragma once
#include <functional>

#include "Files/CFileRef.h"
#include "Values/CCFXmlParser.h"
#include "Values/CCFXmlWriter.h"

/** Reads a property list from front to end and hands each value to `taker` as it is complete, so that a list of a
    million rows never stands in memory as a tree. `root` gets what was not taken, and is untouched on failure; what was
    taken before a failure is the caller's to throw away. Logs "Reading file: ".
    Threads  any; blocks as long as the disc does.
    Errors   fnfErr: no file; eofErr: a text that is cut; paramErr: any other that does not parse. */
OSErr ReadPropertyListStream(const CFileRef& file, CCFXmlParser::Taker taker, CCFValue& root);

/** Writes a property list piece by piece, by a safe save: `file` afterwards holds all of it, or is untouched. Logs
    "## PList Write Start: " and "## PList Write End: ". For a worker. */
OSErr WritePropertyListStream(const CFileRef& file, const std::function<void(CCFXmlWriter&)>& write);
