#include "Values/CCFXmlParser.h"

#include <expat.h>
#include <charconv>
#include <utility>

#include "Core/Base64.h"
#include "Core/CLog.h"
#include "Values/CCFDictionary.h"
#include "Values/PropertyListDate.h"

namespace {

enum class Element { kNone, kPList, kDict, kArray, kKey, kString, kInteger, kReal, kDate, kData, kTrue, kFalse };

struct ElementRow {
    std::string_view name;
    Element element;
};
constexpr ElementRow kElements[] = {
    {"plist", Element::kPList},   {"dict", Element::kDict},       {"array", Element::kArray}, {"key", Element::kKey},
    {"string", Element::kString}, {"integer", Element::kInteger}, {"real", Element::kReal},   {"date", Element::kDate},
    {"data", Element::kData},     {"true", Element::kTrue},       {"false", Element::kFalse},
};

Element ElementOf(std::string_view name) {
    for (const auto& row : kElements)
        if (row.name == name) return row.element;
    return Element::kNone;
}

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
std::string_view Trim(std::string_view text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

std::optional<CCFValue> IntegerOf(std::string_view text) {
    text = Trim(text);
    const bool negativeB = text.starts_with('-');
    if (negativeB || text.starts_with('+')) text.remove_prefix(1);
    const bool hexB = text.starts_with("0x") || text.starts_with("0X");
    if (hexB) text.remove_prefix(2);
    std::uint64_t magnitude = 0;
    const auto [endP, problem] = std::from_chars(text.data(), text.data() + text.size(), magnitude, hexB ? 16 : 10);
    if (problem != std::errc() || endP != text.data() + text.size()) return std::nullopt;
    constexpr std::uint64_t kMost = 0x7FFFFFFFFFFFFFFF;
    if (magnitude > kMost + (negativeB ? 1U : 0U)) return std::nullopt;
    return CCFValue(static_cast<std::int64_t>(negativeB ? 0 - magnitude : magnitude));
}

std::optional<CCFValue> RealOf(std::string_view text) {
    text = Trim(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    double value = 0;
    const auto [endP, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (problem != std::errc() || endP != text.data() + text.size()) return std::nullopt;
    return CCFValue(value);
}

}   // namespace

struct CCFXmlParser::Parser_ {
    /** An array or a dictionary that is still open. */
    struct Frame {
        bool dictB = false;
        bool haveKeyB = false;   // a key stands and waits for its value (it is the last of `path`)
        CFArray array;
        CCFDictionary dictionary;
    };

    explicit Parser_(Taker takerProc)
        : taker(std::move(takerProc)), expatP(XML_ParserCreate(nullptr), &XML_ParserFree) {
        if (expatP == nullptr) {
            err = memFullErr;
            return;
        }
        XML_SetUserData(expatP.get(), this);
        XML_SetElementHandler(expatP.get(), &OnStart, &OnEnd);
        XML_SetCharacterDataHandler(expatP.get(), &OnText);
        XML_SetEntityDeclHandler(expatP.get(), &OnEntity);
        XML_SetSkippedEntityHandler(expatP.get(), &OnSkipped);
    }

    void Fail(OSErr status, std::string_view why) {
        if (Failed(err)) return;
        err = status;
        LogF("### Error parsing property list: %d, line %lu: %.*s", Number(status),
             static_cast<unsigned long>(XML_GetCurrentLineNumber(expatP.get())), static_cast<int>(why.size()),
             why.data());
        XML_StopParser(expatP.get(), XML_FALSE);
    }

    void Start(std::string_view name) {
        if (Failed(err)) return;
        const Element element = ElementOf(name);
        if (element == Element::kNone) return Fail(paramErr, "unknown element");
        if (leaf != Element::kNone) return Fail(paramErr, "element inside a value");
        if (element == Element::kPList) {
            if (plistB) return Fail(paramErr, "plist inside plist");
            plistB = true;
            return;
        }
        if (!plistB) return Fail(paramErr, "no plist element");
        if (frames.empty() ? root.has_value() || element == Element::kKey : !Expected(element, frames.back()))
            return Fail(paramErr, "element out of place");
        if (element == Element::kDict || element == Element::kArray) {
            if (frames.size() >= static_cast<std::size_t>(kPList_MaxDepth)) return Fail(paramErr, "too deep");
            frames.emplace_back().dictB = element == Element::kDict;
            path.emplace_back();
            return;
        }
        leaf = element;
        text.clear();
    }
    static bool Expected(Element element, const Frame& frame) {
        if (!frame.dictB) return element != Element::kKey;
        return (element == Element::kKey) != frame.haveKeyB;
    }

    void End() {
        if (Failed(err)) return;
        if (leaf != Element::kNone) return EndLeaf();
        if (frames.empty()) return;   // of plist itself; Finish asks for the root
        Frame frame = std::move(frames.back());
        if (frame.haveKeyB) return Fail(paramErr, "key without a value");
        frames.pop_back();
        path.pop_back();
        Complete(frame.dictB ? CCFValue(std::move(frame.dictionary)) : CCFValue(std::move(frame.array)));
    }

    void EndLeaf() {
        const Element element = std::exchange(leaf, Element::kNone);
        if (element == Element::kKey) {
            frames.back().haveKeyB = true;
            path.back() = std::move(text);
            text.clear();
            return;
        }
        std::optional<CCFValue> value = LeafValue(element);
        if (!value) return Fail(paramErr, "value does not read");
        Complete(std::move(*value));
    }

    std::optional<CCFValue> LeafValue(Element element) {
        switch (element) {
            case Element::kString:
                return CCFValue(SuperString(std::exchange(text, {})));
            case Element::kInteger:
                return IntegerOf(text);
            case Element::kReal:
                return RealOf(text);
            case Element::kTrue:
            case Element::kFalse:
                if (!Trim(text).empty()) return std::nullopt;
                return CCFValue(element == Element::kTrue);
            case Element::kDate:
                if (const auto date = ParsePropertyListDate(Trim(text))) return CCFValue(*date);
                return std::nullopt;
            case Element::kData:
                if (auto bytes = DecodeBase64(text)) return CCFValue(std::move(*bytes));
                return std::nullopt;
            default:
                return std::nullopt;
        }
    }

    void Complete(CCFValue value) {
        if (frames.empty()) {
            root = std::move(value);
            return;
        }
        Frame& frame = frames.back();
        const bool takenB = taker && taker(path, value);
        frame.haveKeyB = false;
        if (takenB) return;
        if (frame.dictB)
            frame.dictionary.Set(path.back(), std::move(value));   // of two equal keys the later one wins
        else
            frame.array.push_back(std::move(value));
    }

    void Text(std::string_view piece) {
        if (Failed(err)) return;
        if (leaf != Element::kNone)
            text += piece;
        else if (!Trim(piece).empty())
            Fail(paramErr, "text outside a value");
    }

    OSErr Parse(std::span<const std::byte> bytes, bool lastB) {
        if (Failed(err)) return err;
        const auto* bytesP = reinterpret_cast<const char*>(bytes.data());
        if (XML_Parse(expatP.get(), bytesP, static_cast<int>(bytes.size()), lastB ? XML_TRUE : XML_FALSE) ==
                XML_STATUS_OK ||
            Failed(err))
            return err;
        const XML_Error problem = XML_GetErrorCode(expatP.get());
        const bool cutB = lastB && (problem == XML_ERROR_NO_ELEMENTS || problem == XML_ERROR_UNCLOSED_TOKEN ||
                                    problem == XML_ERROR_PARTIAL_CHAR || problem == XML_ERROR_UNCLOSED_CDATA_SECTION);
        Fail(problem == XML_ERROR_NO_MEMORY ? memFullErr : cutB ? eofErr : paramErr, XML_ErrorString(problem));
        return err;
    }

    static void XMLCALL OnStart(void* selfP, const XML_Char* nameZ, const XML_Char** /*attributes*/) {
        static_cast<Parser_*>(selfP)->Start(nameZ);
    }
    static void XMLCALL OnEnd(void* selfP, const XML_Char* /*nameZ*/) { static_cast<Parser_*>(selfP)->End(); }
    static void XMLCALL OnText(void* selfP, const XML_Char* textP, int lengthL) {
        static_cast<Parser_*>(selfP)->Text({textP, static_cast<std::size_t>(lengthL)});
    }
    static void XMLCALL OnEntity(void* selfP, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
                                 const XML_Char*, const XML_Char*, const XML_Char*) {
        static_cast<Parser_*>(selfP)->Fail(paramErr, "entity declaration");
    }
    static void XMLCALL OnSkipped(void* selfP, const XML_Char*, int) {
        static_cast<Parser_*>(selfP)->Fail(paramErr, "unknown entity");
    }

    Taker taker;
    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> expatP;
    OSErr err = noErr;
    bool plistB = false;
    std::optional<CCFValue> root;
    std::vector<Frame> frames;       // the open containers, the root's first
    std::vector<std::string> path;   // one key for each of them: that of the member being read
    Element leaf = Element::kNone;   // the value element that is open
    std::string text;                // its text so far
};

CCFXmlParser::CCFXmlParser(Taker taker) : i_parserP(std::make_unique<Parser_>(std::move(taker))) {}
CCFXmlParser::~CCFXmlParser() = default;

OSErr CCFXmlParser::Feed(std::span<const std::byte> bytes) {
    constexpr std::size_t kPiece = 1 << 20;   // Expat counts in int
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(kPiece, bytes.size())))
        if (const OSErr err = i_parserP->Parse(bytes.first(std::min(kPiece, bytes.size())), false); Failed(err))
            return err;
    return i_parserP->err;
}

OSErr CCFXmlParser::Finish(CCFValue& root) {
    if (const OSErr err = i_parserP->Parse({}, true); Failed(err)) return err;
    if (!i_parserP->root) {
        i_parserP->Fail(paramErr, "no value");
        return i_parserP->err;
    }
    root = std::move(*i_parserP->root);
    return noErr;
}
