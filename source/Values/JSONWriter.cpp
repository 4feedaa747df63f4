#include "Values/JSONWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "Core/Base64.h"
#include "Core/UTF8.h"
#include "Platform/CClock.h"
#include "Values/CCFDictionary.h"
#include "Values/DateForms.h"

namespace {

constexpr double kLongEnd = 9223372036854775808.0;   // the first whole number that "%ld" cannot print

void AppendNumber(double value, std::string& json) {
    if (!std::isfinite(value)) {
        json += "null";
        return;
    }
    if (value == std::floor(value) && value >= -kLongEnd && value < kLongEnd) {
        json += std::to_string(static_cast<std::int64_t>(value));
        return;
    }
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    json.append(buffer.data(), result.ptr);
}

std::string JSONDate(CFDate date) {
    const double millisecondsT = std::round((date.absoluteT + kEpoch2001T) * 1000);
    const bool fitsB = millisecondsT >= -kLongEnd && millisecondsT < kLongEnd;   // false for what is no number
    return "/Date(" + std::to_string(fitsB ? static_cast<std::int64_t>(millisecondsT) : 0) + "+0000)/";
}

void AppendEscape(char32_t code, std::string& json) {
    switch (code) {
        case '"':
            json += "\\\"";
            return;
        case '\\':
            json += "\\\\";
            return;
        case '\b':
            json += "\\b";
            return;
        case '\f':
            json += "\\f";
            return;
        case '\n':
            json += "\\n";
            return;
        case '\r':
            json += "\\r";
            return;
        case '\t':
            json += "\\t";
            return;
        default:
            break;
    }
    std::array<char, 8> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "\\u%04x", static_cast<unsigned>(code));
    json += buffer.data();
}

}   // namespace

void AppendJSONString(std::string_view text, std::string& json) {
    json += '"';
    while (!text.empty()) {
        const UTF8Char next = NextUTF8(text);
        if (!next.validB)
            json += kUTF8_Replacement;
        else if (next.code < 0x20 || next.code == '"' || next.code == '\\')
            AppendEscape(next.code, json);
        else
            json += text.substr(0, next.bytesL);
        text.remove_prefix(next.bytesL);
    }
    json += '"';
}

std::string JSONString(std::string_view text) {
    std::string json;
    AppendJSONString(text, json);
    return json;
}

void ForEach_CopyToJSON(const CCFValue& value, std::string& json) {
    switch (value.Type()) {
        case CFType::kInteger:
            json += std::to_string(*value.Integer());
            return;
        case CFType::kFloat:
            return AppendNumber(*value.Number(), json);
        case CFType::kString:
            if (*value.String() == "null")
                json += "null";
            else
                AppendJSONString(*value.String(), json);
            return;
        case CFType::kArray: {
            json += '[';
            bool firstB = true;
            for (const CCFValue& member : *value.Array()) {
                if (!firstB) json += ',';
                firstB = false;
                ForEach_CopyToJSON(member, json);
            }
            json += ']';
            return;
        }
        case CFType::kDictionary: {
            json += '{';
            bool firstB = true;
            for (const auto& [key, member] : *value.Dictionary()) {
                if (!firstB) json += ',';
                firstB = false;
                AppendJSONString(key, json);
                json += ':';
                ForEach_CopyToJSON(member, json);
            }
            json += '}';
            return;
        }
        case CFType::kDate:
            return AppendJSONString(JSONDate(*value.Date()), json);
        case CFType::kBool:
            json += *value.Bool() ? "true" : "false";
            return;
        case CFType::kData:
            return AppendJSONString(EncodeBase64(*value.Data()), json);
    }
}

std::string CopyToJSON(const CCFValue& value) {
    std::string json;
    ForEach_CopyToJSON(value, json);
    return json;
}

OSErr ReadJSONDate(std::string_view text, CFDate& date) {
    constexpr std::string_view kFront = "/Date(";
    constexpr std::string_view kBack = ")/";
    if (!text.starts_with(kFront)) return ReadDate(text, date);
    if (!text.ends_with(kBack) || text.size() < kFront.size() + kBack.size()) return paramErr;
    text = text.substr(kFront.size(), text.size() - kFront.size() - kBack.size());
    std::int64_t millisecondsL = 0;
    const auto [endP, problem] = std::from_chars(text.data(), text.data() + text.size(), millisecondsL);
    if (problem != std::errc()) return paramErr;
    const std::string_view zone(endP, static_cast<std::size_t>(text.data() + text.size() - endP));
    const bool zoneB = zone.size() == 5 && (zone[0] == '+' || zone[0] == '-') &&
                       zone.find_first_not_of("0123456789", 1) == std::string_view::npos;
    if (!zone.empty() && !zoneB) return paramErr;
    date.absoluteT = static_cast<double>(millisecondsL) / 1000 - kEpoch2001T;
    return noErr;
}
