#include "Values/CCFXmlWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "Core/Base64.h"
#include "Core/UTF8.h"
#include "Values/CCFDictionary.h"
#include "Values/PropertyListDate.h"

namespace {

constexpr std::size_t kBuffer_Bytes = 64 * 1024;

bool FitsXML(char32_t c) { return c == '\t' || c == '\n' || c == '\r' || (c >= 0x20 && c != 0xFFFE && c != 0xFFFF); }

/** What stands in a text as it is, looked at byte by byte: most of all that is written. */
bool IsPlain(char c) { return c >= 0x20 && c < 0x7F && c != '&' && c != '<' && c != '>'; }

void AppendEscaped(std::string& out, std::string_view text) {
    while (!text.empty()) {
        const auto plainL = static_cast<std::size_t>(std::ranges::find_if_not(text, IsPlain) - text.begin());
        out += text.substr(0, plainL);
        text.remove_prefix(plainL);
        if (text.empty()) return;
        const UTF8Char next = NextUTF8(text);
        const std::string_view bytes = text.substr(0, next.bytesL);
        text.remove_prefix(next.bytesL);
        if (!next.validB || !FitsXML(next.code))
            out += kUTF8_Replacement;
        else if (next.code == '&')
            out += "&amp;";
        else if (next.code == '<')
            out += "&lt;";
        else if (next.code == '>')
            out += "&gt;";
        else if (next.code == '\r')
            out += "&#13;";   // a bare one would be read as a line feed
        else
            out += bytes;
    }
}

std::string RealText(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "+infinity" : "-infinity";
    std::array<char, 64> buffer{};
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);   // the shortest that reads back
    return {buffer.data(), result.ptr};
}

}   // namespace

CCFXmlWriter::CCFXmlWriter(Sink sink) : i_sink(std::move(sink)) {
    i_buffer =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n";
}

void CCFXmlWriter::Flush(std::size_t keepL) {
    if (i_buffer.size() <= keepL) return;
    if (!Failed(i_err)) i_err = i_sink(i_buffer);
    i_buffer.clear();
}

void CCFXmlWriter::Indent() {
    Flush(kBuffer_Bytes);
    i_buffer.append(i_dictionaryB.size(), '\t');
}

void CCFXmlWriter::Line(std::string_view name, std::string_view text) {
    Indent();
    i_buffer.append("<").append(name).append(">");
    AppendEscaped(i_buffer, text);
    i_buffer.append("</").append(name).append(">\n");
}

void CCFXmlWriter::BeginDictionary() {
    if (i_dictionaryB.size() >= static_cast<std::size_t>(kPList_MaxDepth)) i_err = FirstOf(i_err, paramErr);
    Indent();
    i_buffer += "<dict>\n";
    i_dictionaryB.push_back(true);
}

void CCFXmlWriter::BeginArray() {
    if (i_dictionaryB.size() >= static_cast<std::size_t>(kPList_MaxDepth)) i_err = FirstOf(i_err, paramErr);
    Indent();
    i_buffer += "<array>\n";
    i_dictionaryB.push_back(false);
}

void CCFXmlWriter::End() {
    if (i_dictionaryB.empty()) return;
    const bool dictionaryB = i_dictionaryB.back();
    i_dictionaryB.pop_back();
    Indent();
    i_buffer += dictionaryB ? "</dict>\n" : "</array>\n";
}

void CCFXmlWriter::Key(std::string_view key) { Line("key", key); }

void CCFXmlWriter::Data(const CFData& data) {
    constexpr std::size_t kLine_Bytes = 48;   // 64 characters
    Indent();
    i_buffer += "<data>\n";
    for (std::span<const std::byte> left = data; !left.empty();
         left = left.subspan(std::min(kLine_Bytes, left.size()))) {
        Indent();
        i_buffer.append(EncodeBase64(left.first(std::min(kLine_Bytes, left.size())))).append("\n");
    }
    Indent();
    i_buffer += "</data>\n";
}

void CCFXmlWriter::Value(const CCFValue& value) {
    if (Failed(i_err)) return;
    switch (value.Type()) {
        case CFType::kBool:
            Indent();
            i_buffer += *value.Bool() ? "<true/>\n" : "<false/>\n";
            return;
        case CFType::kInteger:
            return Line("integer", std::to_string(*value.Integer()));
        case CFType::kFloat:
            return Line("real", RealText(*value.Number()));
        case CFType::kString:
            return Line("string", *value.String());
        case CFType::kDate:
            return Line("date", PropertyListDate(*value.Date()));
        case CFType::kData:
            return Data(*value.Data());
        case CFType::kArray:
            BeginArray();
            for (const CCFValue& member : *value.Array()) Value(member);
            return End();
        case CFType::kDictionary:
            BeginDictionary();
            for (const auto& [key, member] : *value.Dictionary()) {
                Key(key);
                Value(member);
            }
            return End();
    }
}

OSErr CCFXmlWriter::Finish() {
    if (!i_dictionaryB.empty()) i_err = FirstOf(i_err, paramErr);
    i_buffer += "</plist>\n";
    Flush(0);
    return i_err;
}
