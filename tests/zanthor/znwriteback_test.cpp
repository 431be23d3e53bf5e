#include <gtest/gtest.h>

#include <QFile>
#include <QSaveFile>
#include <QTemporaryDir>

#include <znwriteback.h>

namespace {

// Bytes that differ from one offset to the next, so that a piece written at the wrong
// place or twice shows.
QByteArray patternBytes(qint64 offset, qint64 count)
{
    QByteArray bytes(static_cast<int>(count), '\0');
    for (qint64 i = 0; i < count; ++i) bytes[static_cast<int>(i)] = static_cast<char>(((offset + i) * 131) >> 3);
    return bytes;
}

TEST(ZNWriteback, PiecesOfEverySizeInAnyOrderEndUpInTheCommittedFile)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath("streamed.bin");
    // Small pieces that coalesce, pieces larger than one hand-over, and enough bytes for
    // the earliest ones to be waited for and released while later ones are written.
    const qint64 sizes[] = {100, 4096, 70000, ZNWriteback::kPieceBytes - 1, 3 * ZNWriteback::kPieceBytes, 1, 5 << 20,
                            12345, 9 << 20, 2 << 20};
    QSaveFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ZNWriteback writeback(file);
    qint64 end = 0;
    for (qint64 size : sizes) {
        ASSERT_EQ(file.write(patternBytes(end, size)), size);
        ASSERT_TRUE(writeback.written(end, size));
        end += size;
    }
    // A header rewritten at the start after the rest, as block files do, and a piece
    // written behind the end.
    const QByteArray header = patternBytes(0, 2500);
    ASSERT_TRUE(file.seek(0));
    ASSERT_EQ(file.write(header), header.size());
    ASSERT_TRUE(writeback.written(0, header.size()));
    ASSERT_TRUE(file.seek(end));
    ASSERT_EQ(file.write(patternBytes(end, 777)), 777);
    ASSERT_TRUE(writeback.written(end, 777));
    end += 777;
    ASSERT_TRUE(file.commit());

    QFile written(path);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    ASSERT_EQ(written.size(), end);
    const QByteArray all = written.readAll();
    EXPECT_TRUE(all == patternBytes(0, end));
}

TEST(ZNWriteback, HandingOverPassesQtsBufferToTheSystem)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QFile file(dir.filePath("buffered.bin"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ZNWriteback writeback(file);
    // Writes small enough for Qt to keep in its buffer.
    qint64 end = 0;
    while (end < ZNWriteback::kPieceBytes) {
        ASSERT_EQ(file.write(patternBytes(end, 1000)), 1000);
        ASSERT_TRUE(writeback.written(end, 1000));
        end += 1000;
    }
    // Once a whole piece was recorded, another reader sees every byte written.
    QFile reader(file.fileName());
    ASSERT_TRUE(reader.open(QIODevice::ReadOnly));
    EXPECT_EQ(reader.size(), end);
    EXPECT_TRUE(reader.readAll() == patternBytes(0, end));
    ASSERT_TRUE(writeback.startPending());
}

TEST(ZNWriteback, AClosedFileFailsOnceAPieceIsDue)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QFile file(dir.filePath("closed.bin"));
    ZNWriteback writeback(file);
    EXPECT_TRUE(writeback.written(0, 10));  // nothing due yet
    EXPECT_FALSE(writeback.written(10, ZNWriteback::kPieceBytes));
    EXPECT_FALSE(writeback.startPending());
}

} // namespace
