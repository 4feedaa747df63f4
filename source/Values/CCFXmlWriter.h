#pragma once
#include <functional>
#include <string>
#include <string_view>

#include "Values/CCFValue.h"

/** Writes a property list in XML, in the form of Apple's published document type, to whatever takes the bytes: whole
    values, or a long array or dictionary row by row (Begin..., Key, Value, End).
    What XML cannot hold (control characters, bytes that are no UTF-8) is written as U+FFFD, so that one strange name
    does not stop a save. Dates are written in whole seconds.
    Threads  one at a time.
    Errors   the sink's first failure is kept, and nothing is written after it; paramErr for values too deep. */
class CCFXmlWriter {
public:
    using Sink = std::function<OSErr(std::string_view bytes)>;

    explicit CCFXmlWriter(Sink sink);

    void BeginDictionary();
    void BeginArray();
    /** Closes the innermost open one. */
    void End();
    /** Inside a dictionary, in front of each value. */
    void Key(std::string_view key);
    void Value(const CCFValue& value);
    /** Writes what is left; the status of the whole writing. Call once, when all is closed. */
    OSErr Finish();

private:
    void Indent();
    void Line(std::string_view name, std::string_view text);
    void Data(const CFData& data);
    void Flush(std::size_t keepL);

    Sink i_sink;
    std::string i_buffer;
    std::vector<bool> i_dictionaryB;   // for each open container: a dictionary
    OSErr i_err = noErr;
};
