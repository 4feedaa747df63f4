#include "Library/CMeta_PLItem.h"

#include "Core/Assertions.h"

bool CMeta_PLItem::IsRowKey(MetaKey key) {
    static constexpr MetaKey kRow_Keys[] = {"PLME"_key, "PICH"_key, "TMPO"_key};
    return std::ranges::find(kRow_Keys, key) != std::end(kRow_Keys);
}

void CMeta_PLItem::CheckSetter(MetaKey key) const {
    CMeta::CheckSetter(key);
    AssertNotIdentity(key);
    (void)AssertWords(IsRowKey(key), "IsRowKey(key)");
}
