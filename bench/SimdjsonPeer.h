#pragma once
#include "clipboard/ClipItem.h"
#include <QByteArray>
#include <QList>

// simdjson (Debian's libsimdjson-dev) on the same history file as Orlo's own reader and
// writer, for the clipboard benchmark's comparison. Each returns its time in milliseconds,
// or a negative number when the file did not parse.
namespace simdjsonpeer {
// Parses the whole file into simdjson's document.
double parse(const QByteArray& json);
// Parses it and visits every value, making a QString of every string as Orlo's items hold
// them: the least a reader of the history has to do beyond parsing.
double parseAndWalk(const QByteArray& json);
// Parses it with simdjson's on-demand reader into the items Orlo's own reader builds: the
// same task. Qt's own helpers decode the ids, dates and Base64.
double parseIntoItems(const QByteArray& json, QList<orlo::ClipItem>* items);
// Parses it, then times writing the parsed document back to text (simdjson writes only
// what it has parsed).
double serialize(const QByteArray& json);
}  // namespace simdjsonpeer
