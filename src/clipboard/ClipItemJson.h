#pragma once
#include "clipboard/ClipHistoryFile.h"
#include "clipboard/JsonWriter.h"
#include <QByteArrayView>

namespace orlo {

// How an item stands in the history file: one object, its keys in field order, absent
// fields left out, rich data in Base64 and dates in seconds since 1 January 2001 (UTC).
class ClipItemJson {
public:
    static void write(JsonWriter& out, const ClipItem& item);
    // Reads the items of one part of the history's array: the first part begins with its
    // '[', the last ends with its ']', and the others hold whole items separated by commas.
    // Optional keys may be missing or null; unknown keys are skipped.
    static bool readPart(QByteArrayView part, bool first, bool last, ClipHistoryFile::Part& out);
};

}  // namespace orlo
