#pragma once
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "Values/CCFValue.h"

/** Reads a property list in XML, piece by piece, so that a file of a million rows need not stand in memory.
    Source   Apple's published document type "-//Apple//DTD PLIST 1.0//EN": one value inside a `plist` element.
    Safety   arrays and dictionaries no deeper than kPList_MaxDepth; entities of the file's own are refused, so nothing
             expands; nothing outside the file is fetched.
    Threads  one at a time; the taker is called from within Feed.
    Errors   eofErr: the text ends too early; paramErr: no XML, or no property list. Logged once, with the line. */
class CCFXmlParser {
public:
    /** A value is complete. `path` names it: the keys from the root to it, an empty key for a member of an array.
        True: taken (it may be moved from), the tree does not keep it. Never called for the root. */
    using Taker = std::function<bool(std::span<const std::string> path, CCFValue& value)>;

    explicit CCFXmlParser(Taker taker = {});
    ~CCFXmlParser();
    CCFXmlParser(const CCFXmlParser&) = delete;
    CCFXmlParser& operator=(const CCFXmlParser&) = delete;

    /** The next bytes of the file; after a failure it only repeats the status. */
    OSErr Feed(std::span<const std::byte> bytes);
    /** No more bytes. `root` is untouched on failure. */
    OSErr Finish(CCFValue& root);

private:
    struct Parser_;
    std::unique_ptr<Parser_> i_parserP;
};
