#include "Meta/CMeta_PLItem.h"

#include "Core/Assertions.h"

bool CMeta_PLItem::IsRowKey(MetaKey key) { return key == "PLME"_key || IsTuningKey(key); }

void CMeta_PLItem::CheckSetter(MetaKey key) const {
    CMeta::CheckSetter(key);
    AssertNotIdentity(key);
    (void)AssertWords(IsRowKey(key), "IsRowKey(key)");
}
