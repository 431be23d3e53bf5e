#include <gtest/gtest.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>

#include <testfiles.h>
#include <znrawvolumedialog.h>

TEST(RawVolumeDialog, ACubicFileStartsAsItsCubeAndOkNeedsALayoutOfTheFilesSize)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("cube.f32");
    ASSERT_TRUE(writeFileBytes(path, QByteArray(16 * 16 * 16 * 4, '\0')));
    ZNRawVolumeDialog dialog(path);
    const volumeio::RawVolumeLayout start = dialog.layout();
    EXPECT_EQ(start.nInline, 16);
    EXPECT_EQ(start.nSample, 16);
    EXPECT_EQ(start.byteOrder, volumeio::ByteOrder::BigEndian);
    EXPECT_EQ(volumeio::axisOrderName(start.axes), "zyx");
    QPushButton* ok = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
    EXPECT_TRUE(ok->isEnabled());

    dialog.findChild<QSpinBox*>("size2")->setValue(32);  // twice the file
    EXPECT_FALSE(dialog.layoutMatchesFile());
    EXPECT_FALSE(ok->isEnabled());

    volumeio::RawVolumeLayout flat;
    flat.nInline = 64;
    flat.nCrossline = 8;
    flat.nSample = 8;
    flat.byteOrder = volumeio::ByteOrder::LittleEndian;
    volumeio::parseAxisOrder("xyz", flat.axes);
    flat.spacing = core::vec3(12.5, 25.0, 4.0);
    dialog.setLayout(flat);
    EXPECT_TRUE(ok->isEnabled());
    const volumeio::RawVolumeLayout back = dialog.layout();
    EXPECT_EQ(back.nInline, 64);
    EXPECT_EQ(back.byteOrder, volumeio::ByteOrder::LittleEndian);
    EXPECT_EQ(volumeio::axisOrderName(back.axes), "xyz");
    EXPECT_DOUBLE_EQ(back.spacing.y, 25.0);
}
