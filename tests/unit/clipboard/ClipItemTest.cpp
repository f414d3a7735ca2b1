#include "FakePlatform.h"
#include "clipboard/ClipAssets.h"
#include "clipboard/ClipItem.h"
#include "clipboard/ClipCapture.h"
#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

QByteArray encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QImage smallImage(int w = 3, int h = 2)
{
    QImage image(w, h, QImage::Format_ARGB32);
    image.fill(Qt::red);
    return image;
}

ClipItem textItem(const QString& text)
{
    return ClipItem::makeText(text, std::nullopt, std::nullopt);
}

}  // namespace

TEST(ClipItem, SignaturesAreTheFirstHalfOfSha256InLowerCaseHex)
{
    EXPECT_EQ(ClipSignature::ofContent('t', "").toString(), "t:e3b0c44298fc1c149afbf4c8996fb924");
    EXPECT_EQ(ClipSignature::ofContent('i', "abc").toString(), "i:ba7816bf8f01cfea414140de5dae2223");
    // Same text, whatever its rich forms: same signature; a trailing blank makes another.
    const ClipItem plain = textItem("hello");
    const ClipItem rich = ClipItem::makeText("hello", QByteArray("{\\rtf1}"), QByteArray("<b>hello</b>"));
    EXPECT_EQ(plain.signature, ClipSignature::ofContent('t', "hello"));
    EXPECT_EQ(plain.signature, rich.signature);
    EXPECT_NE(plain.signature, textItem("hello ").signature);
    EXPECT_EQ(ClipItem::makeColor("#FF0000").signature.toString(), "c:#FF0000");
    EXPECT_EQ(ClipItem::makeFiles({"/a", "/b"}).signature, ClipSignature::ofContent('f', "/a\n/b"));
}

TEST(ClipItem, ASignatureReadsBackAsTheSameTextAndIsEqualExactlyWhenItsTextIs)
{
    // Orlo's digest form, and texts that come close to it, which are kept as they stand.
    const QStringList texts{"t:e3b0c44298fc1c149afbf4c8996fb924", "t:E3B0C44298FC1C149AFBF4C8996FB924",
                            "t:e3b0c44298fc1c149afbf4c8996fb92",  "t:e3b0c44298fc1c149afbf4c8996fb92g",
                            "T:e3b0c44298fc1c149afbf4c8996fb924", "c:#FF0000", "f:A", "", "é:e3b0c44298fc1c149afbf4c8996fb92"};
    for (const QString& text : texts) {
        const ClipSignature fromText = ClipSignature::fromText(text), fromUtf8 = ClipSignature::fromUtf8(text.toUtf8());
        EXPECT_EQ(fromText.toString(), text);
        EXPECT_EQ(fromText, fromUtf8) << qPrintable(text);
        EXPECT_EQ(fromText.key(), fromUtf8.key()) << qPrintable(text);
        for (const QString& other : texts) {
            if (other == text) continue;
            EXPECT_NE(fromText, ClipSignature::fromText(other)) << qPrintable(text) << " " << qPrintable(other);
        }
    }
}

TEST(ClipItem, ATextCloseToADigestReadFromBrokenUtf8IsTheSignatureItWritesBack)
{
    // The last byte is not UTF-8: the text kept ends in a replacement character.
    const ClipSignature read = ClipSignature::fromUtf8("t:e3b0c44298fc1c149afbf4c8996fb92\x9d");
    EXPECT_EQ(read, ClipSignature::fromUtf8(read.toString().toUtf8()));
    EXPECT_EQ(read, ClipSignature::fromText(read.toString()));
}

TEST(ClipItem, ColourTextRoundTrips)
{
    EXPECT_EQ(ClipItem::hex(QColor(255, 0, 16)), "#FF0010");
    EXPECT_EQ(ClipItem::hex(QColor(0, 0, 255, 128)), "#0000FF80");
    EXPECT_EQ(ClipItem::hex(QColor()), std::nullopt);
    for (const QString text : {"#ff0000", "ff0000", "##ff0000#"}) {
        const auto c = ClipItem::colorFromHex(text);
        ASSERT_TRUE(c) << text.toStdString();
        EXPECT_EQ(ClipItem::hex(*c), "#FF0000");
    }
    EXPECT_EQ(ClipItem::hex(*ClipItem::colorFromHex("#11223344")), "#11223344");
    for (const QString text : {"#f00", "", "#gg0000", "+ff0000", "0xff00", "#ff0000ff00"})
        EXPECT_FALSE(ClipItem::colorFromHex(text)) << text.toStdString();
}

TEST(ClipItem, TitlesByKind)
{
    EXPECT_EQ(textItem("\n   \n\t  second line  \nthird").title(), "second line");
    EXPECT_EQ(textItem("\r\n\r\nwindows\r\n").title(), "windows");
    EXPECT_EQ(textItem(QString(1000, 'x')).title().size(), 200);
    EXPECT_EQ(textItem(" \n ").title(), "");
    // Blanks at the cut stay when the line goes on after them, and go when it ends there.
    EXPECT_EQ(textItem("a" + QString(300, ' ') + "b").title(), "a" + QString(199, ' '));
    EXPECT_EQ(textItem("a" + QString(300, ' ') + "\nb").title(), "a");
    EXPECT_EQ(ClipItem::makeFiles({"/tmp/report.pdf", "/tmp/b.txt", "/c"}).title(), "report.pdf + 2 more");
    EXPECT_EQ(ClipItem::makeFiles({"/tmp/report.pdf"}).title(), "report.pdf");
    EXPECT_EQ(ClipItem::makeImage("png", 640, 480).title(), QStringLiteral("Image 640\u00D7480"));
    ClipItem image = ClipItem::makeImage("png", 1, 1);
    image.setImageSize(image.imageWidth(), std::nullopt);
    EXPECT_EQ(image.title(), "Image");
    EXPECT_EQ(ClipItem::makeColor("#ABCDEF").title(), "#ABCDEF");

    EXPECT_EQ(textItem("a").symbol(), "text.alignleft");
    EXPECT_EQ(ClipItem::makeText("a", std::nullopt, QByteArray("<i>a</i>")).symbol(), "doc.richtext");
    EXPECT_EQ(ClipItem::makeFiles({"/a"}).symbol(), "doc");
    EXPECT_EQ(ClipItem::makeFiles({"/a", "/b"}).symbol(), "doc.on.doc");
    EXPECT_EQ(ClipItem::makeFiles({"/x/a.txt", "/y/b"}).fileNames(), (QStringList{"a.txt", "b"}));
}

TEST(ClipCapture, TakesFilesThenTextThenImageThenColour)
{
    fakes::FakePasteboard board;
    const QByteArray png = encoded(smallImage(), "PNG");

    // Files win over the string a file manager puts beside them.
    board.paths = {"/home/u/a.txt", "/home/u/b.txt"};
    board.text = "/home/u/a.txt\n/home/u/b.txt";
    auto capture = ClipCapture::capture(board);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->item.kind, ClipItem::Kind::Files);
    EXPECT_EQ(capture->item.text, "/home/u/a.txt\n/home/u/b.txt");

    // Blank text falls through to the image.
    board.clear();
    board.text = "  \n\t ";
    board.forms.insert(Pasteboard::Form::Png, png);
    capture = ClipCapture::capture(board);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->item.kind, ClipItem::Kind::Image);
    EXPECT_EQ(capture->png, png);
    EXPECT_EQ(capture->item.imageWidth(), 3);
    EXPECT_EQ(capture->item.imageHeight(), 2);
    EXPECT_FALSE(capture->item.text);

    // Another bitmap format becomes PNG.
    board.clear();
    board.forms.insert(Pasteboard::Form::Bitmap, encoded(smallImage(5, 4), "BMP"));
    capture = ClipCapture::capture(board);
    ASSERT_TRUE(capture);
    EXPECT_TRUE(capture->png.startsWith("\x89PNG"));
    EXPECT_EQ(capture->item.imageWidth(), 5);

    // Bytes that are no image give nothing; a colour is the last resort.
    board.clear();
    board.forms.insert(Pasteboard::Form::Png, "not a png");
    EXPECT_FALSE(ClipCapture::capture(board));
    board.colour = QColor(0, 128, 255);
    capture = ClipCapture::capture(board);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->item.kind, ClipItem::Kind::Color);
    EXPECT_EQ(capture->item.color(), "#0080FF");
    EXPECT_EQ(capture->item.text, "#0080FF");
}

TEST(ClipCapture, BoundsRichDataAndImages)
{
    fakes::FakePasteboard board;
    board.text = "plain";
    board.forms.insert(Pasteboard::Form::Rtf, QByteArray(ClipItem::MaxRichBytes + 1, 'r'));
    board.forms.insert(Pasteboard::Form::Html, QByteArray(ClipItem::MaxRichBytes, 'h'));
    auto capture = ClipCapture::capture(board);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->item.text, "plain");
    EXPECT_FALSE(capture->item.rtf());
    EXPECT_EQ(capture->item.html()->size(), ClipItem::MaxRichBytes);

    // A PNG reader stops at the image's end, so padding makes a valid PNG of any size.
    QByteArray png = encoded(smallImage(), "PNG");
    board.clear();
    png.append(QByteArray(ClipItem::MaxPngBytes - 1 - png.size(), '\0'));
    board.forms.insert(Pasteboard::Form::Png, png);
    EXPECT_TRUE(ClipCapture::capture(board));
    png.append('\0');
    board.forms.insert(Pasteboard::Form::Png, png);
    EXPECT_FALSE(ClipCapture::capture(board));

    // A bitmap that Qt's image allocation limit would refuse is converted all the same.
    const int qtLimit = QImageReader::allocationLimit();
    QImageReader::setAllocationLimit(1);  // megabytes; the image takes 2.4
    board.clear();
    board.forms.insert(Pasteboard::Form::Bitmap, encoded(smallImage(1000, 600), "BMP"));
    capture = ClipCapture::capture(board);
    QImageReader::setAllocationLimit(qtLimit);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->item.imageWidth(), 1000);
    EXPECT_EQ(capture->item.imageHeight(), 600);
}

TEST(ClipAssets, ThumbnailsAreAtMost96PixelsAndAgesAreShort)
{
    QTemporaryDir dir;
    smallImage(400, 200).save(dir.filePath("wide.png"));
    const auto thumb = ClipAssets::makeThumbnail(dir.filePath("wide.png"));
    ASSERT_TRUE(thumb);
    EXPECT_EQ(thumb->size(), QSize(96, 48));
    smallImage(30, 20).save(dir.filePath("small.png"));
    EXPECT_EQ(ClipAssets::makeThumbnail(dir.filePath("small.png"))->size(), QSize(30, 20));
    EXPECT_FALSE(ClipAssets::makeThumbnail(dir.filePath("missing.png")));
    // A one-colour palette image keeps its colour in the thumbnail.
    QImage orange(200, 120, QImage::Format_RGB32);
    orange.fill(QColor(255, 165, 0));
    orange.convertToFormat(QImage::Format_Mono, {qRgb(255, 165, 0), qRgb(0, 0, 0)}).save(dir.filePath("palette.png"));
    const auto paletteThumb = ClipAssets::makeThumbnail(dir.filePath("palette.png"));
    ASSERT_TRUE(paletteThumb);
    EXPECT_EQ(paletteThumb->size(), QSize(96, 57));
    EXPECT_EQ(paletteThumb->pixelColor(40, 20), QColor(255, 165, 0));

    // The picker asks from the main thread and is told when the thumbnail is ready.
    ClipItem item = ClipItem::makeImage("png", 400, 200);
    item.setImage("wide.png");
    ClipAssets::clear();
    EXPECT_FALSE(ClipAssets::thumbnail(item, dir.path()));
    QSignalSpy ready(&ClipAssets::notifier(), &ClipAssets::Notifier::thumbnailReady);
    ASSERT_TRUE(ready.wait(5000));
    EXPECT_EQ(ClipAssets::thumbnail(item, dir.path())->width(), 96);

    const QDateTime now = QDateTime::currentDateTimeUtc();
    EXPECT_EQ(ClipAssets::relative(now.addSecs(-59), now), "now");
    EXPECT_EQ(ClipAssets::relative(now.addSecs(30), now), "now");
    EXPECT_EQ(ClipAssets::relative(now.addSecs(-60), now), "1 min. ago");
    EXPECT_EQ(ClipAssets::relative(now.addSecs(-3 * 3600 - 5), now), "3 hr. ago");
    EXPECT_EQ(ClipAssets::relative(now.addDays(-1), now), "1 day ago");
    EXPECT_EQ(ClipAssets::relative(now.addDays(-3), now), "3 days ago");
    EXPECT_EQ(ClipAssets::relative(now.addDays(-400), now), "1 yr. ago");
}
