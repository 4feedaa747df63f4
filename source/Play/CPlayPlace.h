#pragma once
#include "Library/CPlayList.h"
#include "Play/CPlayOrder.h"

class CSongDatabase;

/** The order of a list: as it is shown. The id of a row that has left is soon another row's, so it is forgotten at once;
    the place is then behind the row that stood before it. */
class CPlayPlace final : public CPlayOrder {
public:
    /** The database outlives it. */
    CPlayPlace(CSongDatabase& database, PlaylistID list) : i_databaseP(&database), i_listID(list) {}
    [[nodiscard]] std::unique_ptr<CPlayOrder> Clone() const override { return std::make_unique<CPlayPlace>(*this); }
    [[nodiscard]] PlaylistID ListID() const override { return i_listID; }
    [[nodiscard]] bool IsThere() const override { return List() != nullptr; }
    [[nodiscard]] PLItemID Item() const override { return i_item; }
    [[nodiscard]] PLItemID Next() const override { return After(CPlayList::Step::kForward); }
    [[nodiscard]] PLItemID Previous() const override { return After(CPlayList::Step::kBackward); }
    [[nodiscard]] std::vector<PLItemID> Ahead(std::size_t mostL) const override;
    [[nodiscard]] bool IsLast() const override;
    /** Not in the list of the singer who stands there. */
    [[nodiscard]] bool RewindsFirst() const override;
    void GoTo(PLItemID item) override;
    void RowsLeave(PlaylistID list, std::span<const PLItemID> items) override;

private:
    [[nodiscard]] CPlayList* List() const;
    [[nodiscard]] PLItemID After(CPlayList::Step step) const;

    CSongDatabase* i_databaseP;
    PlaylistID i_listID;
    PLItemID i_item = SDB_kNoItem;
    bool i_leftB = false;              // the row has left
    PLItemID i_before = SDB_kNoItem;   // then: the one before its place, if there is one
};
