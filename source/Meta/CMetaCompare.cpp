#include "Meta/CMeta.h"

int CMeta::CompareRecursive(CMeta& other, CMetaSortContext& context) {
    context.index = 0;
    const int order = Compare(other, context);
    context.index = 0;
    return order;
}

int CMeta::Compare(CMeta& other, CMetaSortContext& context) {
    // One lock at a time: each value comes out as a copy.
    for (;; ++context.index) {
        const bool lastB = context.index >= context.keys.size();
        const MetaSortKey by = lastB ? MetaSortKey{CM_Key_SORT_INDEX} : context.keys[context.index];
        const CMetaValue mine = Value(by.key, ValueMode::kMakeIfAllowed);
        const CMetaValue theirs = other.Value(by.key, ValueMode::kMakeIfAllowed);
        int order = 0;
        if (!mine != !theirs)
            order = !mine ? -1 : 1;
        else if (mine)
            order = mine.IsLessThan(theirs) ? -1 : theirs.IsLessThan(mine) ? 1 : 0;
        // An unchecked box is never stored, and so comes first; in these two columns it comes last.
        if (by.key == "sgKJ"_key || by.key == "PSNT"_key) order = -order;
        if (order != 0) return by.ascendingB ? order : -order;
        if (lastB) return 0;
    }
}
