#include "platform/mac/MacPasteboard.h"
#import <AppKit/AppKit.h>

// No Core Foundation object is created here. The pasteboard is kept as a retained pointer
// handed over with CFBridgingRetain and given back with CFBridgingRelease.
namespace orlo::mac {

namespace {
NSPasteboard* board(void* pointer) { return (__bridge NSPasteboard*)pointer; }

NSPasteboardType typeOf(Pasteboard::Form form)
{
    switch (form) {
    case Pasteboard::Form::Rtf: return NSPasteboardTypeRTF;
    case Pasteboard::Form::Html: return NSPasteboardTypeHTML;
    case Pasteboard::Form::Png: return NSPasteboardTypePNG;
    case Pasteboard::Form::Bitmap: return NSPasteboardTypeTIFF;
    }
    return NSPasteboardTypeTIFF;
}
}  // namespace

MacPasteboard::MacPasteboard(const QString& name)
    : board_((void*)CFBridgingRetain(name.isEmpty() ? [NSPasteboard generalPasteboard] : [NSPasteboard pasteboardWithName:name.toNSString()]))
{
}

MacPasteboard::~MacPasteboard() { CFBridgingRelease(board_); }

qint64 MacPasteboard::changeCount() { return board(board_).changeCount; }

QStringList MacPasteboard::types()
{
    QStringList out;
    for (NSPasteboardType type in board(board_).types) out << QString::fromNSString(type);
    return out;
}

QByteArray MacPasteboard::dataForType(const QString& type)
{
    NSData* data = [board(board_) dataForType:type.toNSString()];
    return data ? QByteArray::fromNSData(data) : QByteArray();
}

QByteArray MacPasteboard::data(Form form)
{
    NSData* data = [board(board_) dataForType:typeOf(form)];
    return data ? QByteArray::fromNSData(data) : QByteArray();
}

std::optional<QString> MacPasteboard::string()
{
    NSString* text = [board(board_) stringForType:NSPasteboardTypeString];
    if (!text) return std::nullopt;
    return QString::fromNSString(text);
}

QStringList MacPasteboard::filePaths()
{
    NSArray<NSURL*>* urls = [board(board_) readObjectsForClasses:@[[NSURL class]]
                                                         options:@{NSPasteboardURLReadingFileURLsOnlyKey: @YES}];
    QStringList paths;
    for (NSURL* url in urls)
        if (url.fileURL && url.path) paths << QString::fromNSString(url.path);
    return paths;
}

std::optional<QColor> MacPasteboard::color()
{
    NSColor* color = [board(board_) readObjectsForClasses:@[[NSColor class]] options:nil].firstObject;
    NSColor* rgb = [color colorUsingColorSpace:[NSColorSpace sRGBColorSpace]];
    if (!rgb) return std::nullopt;
    return QColor::fromRgbF(float(rgb.redComponent), float(rgb.greenComponent), float(rgb.blueComponent), float(rgb.alphaComponent));
}

void MacPasteboard::write(const Contents& contents)
{
    // The text and its rich forms on one item, each file and the colour on items of their own,
    // as applications put them there.
    NSMutableArray<id<NSPasteboardWriting>>* objects = [NSMutableArray array];
    NSPasteboardItem* item = [[NSPasteboardItem alloc] init];
    if (contents.string) [item setString:contents.string->toNSString() forType:NSPasteboardTypeString];
    if (!contents.rtf.isEmpty()) [item setData:contents.rtf.toNSData() forType:NSPasteboardTypeRTF];
    if (!contents.html.isEmpty()) [item setData:contents.html.toNSData() forType:NSPasteboardTypeHTML];
    if (!contents.png.isEmpty()) [item setData:contents.png.toNSData() forType:NSPasteboardTypePNG];
    if (item.types.count > 0) [objects addObject:item];
    for (const QString& path : contents.filePaths) [objects addObject:[NSURL fileURLWithPath:path.toNSString()]];
    if (contents.color && contents.color->isValid()) {
        const QColor c = contents.color->toRgb();
        [objects addObject:[NSColor colorWithSRGBRed:c.redF() green:c.greenF() blue:c.blueF() alpha:c.alphaF()]];
    }
    NSPasteboard* pasteboard = board(board_);
    [pasteboard clearContents];
    if (objects.count > 0) [pasteboard writeObjects:objects];
}

}  // namespace orlo::mac
