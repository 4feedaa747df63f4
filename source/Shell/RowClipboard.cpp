#include "Shell/RowClipboard.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QIODevice>
#include <QMimeData>
#include <QUrl>

#include "Shell/SongCells.h"

namespace {

constexpr const char* kSongs_MimeZ = "application/x-vopla-songs";
constexpr std::size_t kText_MostRows = 10'000;

QString RowText(const CPlayList& list, PLItemID item, std::span<const MetaKey> columns) {
    QStringList cells;
    for (const MetaKey key : columns) cells << CellText(list, item, key).simplified();
    return cells.join('\t');
}

}   // namespace

std::unique_ptr<QMimeData> CopyOfRows(CSongDatabase& database, const CPlayList& list, std::span<const PLItemID> items,
                                      std::span<const MetaKey> columns) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << static_cast<qint64>(QCoreApplication::applicationPid());   // the ids of another run mean other songs
    QStringList lines;
    QList<QUrl> files;
    const bool textB = items.size() <= kText_MostRows;
    for (const PLItemID item : items) {
        const auto row = list.Items()->Get(item);
        if (!row || row->target.type != SDB_kPLItem_SONG) continue;
        stream << static_cast<qint32>(row->target.idL);
        if (!textB) continue;
        lines << RowText(list, item, columns);
        const CSong* const songP = database.GetSong(SongID{row->target.idL});
        if (songP == nullptr) continue;
        for (const SDB_SongFile type : {SDB_SongFile_ZIP, SDB_SongFile_VIDEO, SDB_SongFile_AUDIO})
            if (const CFileRef file = songP->FileRef(type); !file.IsEmpty())
                files << QUrl::fromLocalFile(QString::fromStdString(file.GetPath().string()));
    }
    auto dataP = std::make_unique<QMimeData>();
    dataP->setData(kSongs_MimeZ, bytes);
    if (!lines.isEmpty()) dataP->setText(lines.join('\n'));
    if (!files.isEmpty()) dataP->setUrls(files);
    return dataP;
}

std::optional<std::vector<SongID>> CopiedSongs(CSongDatabase& database, const QMimeData& data) {
    if (!data.hasFormat(kSongs_MimeZ)) return std::nullopt;
    QDataStream stream(data.data(kSongs_MimeZ));
    qint64 process = 0;
    stream >> process;
    if (process != QCoreApplication::applicationPid()) return std::nullopt;
    std::vector<SongID> songs;
    while (!stream.atEnd()) {
        qint32 id = 0;
        stream >> id;
        if (stream.status() != QDataStream::Ok) return std::nullopt;
        if (database.GetSong(SongID{id}) != nullptr) songs.push_back(SongID{id});
    }
    return songs;
}
