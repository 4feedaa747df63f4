#include "Shell/CT_FilterRows.h"

#include "Threads/CallOnMain.h"

namespace {

constexpr std::size_t kFirstPiece = 2048;   // about what a screen shows, at once
constexpr std::size_t kMostPiece = 1U << 16;

}   // namespace

CT_FilterRows::CT_FilterRows(FilterJob job, std::shared_ptr<CFilterResult> resultRef)
    : CT_Preemptive("filter rows"), i_job(std::move(job)), i_resultRef(std::move(resultRef)) {}

OSErr CT_FilterRows::Operate(OSErr err) {
    if (Failed(err)) return err;
    std::size_t pieceL = kFirstPiece, begin = 0;
    do {
        if (i_resultRef->IsCancelled()) return noErr;
        const std::size_t end = std::min(i_job.rows.size(), begin + pieceL);
        const std::vector<PLRow> rows = i_job.listRef->RowsOf(std::span(i_job.rows).subspan(begin, end - begin));
        const std::vector<CMetaValue> names = i_job.values.Column(rows, "name"_key);
        const std::vector<CMetaValue> artists = i_job.values.Column(rows, "arts"_key);
        std::vector<PLItemID> found;
        for (std::size_t n = 0; n < rows.size(); ++n)
            if (i_job.filter.Matches(names[n].Text(), artists[n].Text())) found.push_back(rows[n].id);
        begin = end;
        pieceL = std::min(pieceL * 4, kMostPiece);
        auto tell = [resultRef = i_resultRef, found = std::move(found), lastB = begin == i_job.rows.size()] {
            resultRef->Tell(found, lastB);
        };
        if (!PostToMain("filter found", std::move(tell))) return abortErr;   // the application ends: nobody waits
    } while (begin < i_job.rows.size());
    return noErr;
}
