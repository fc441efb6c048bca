#pragma once

#include "ChatTable.h"

/// Lines with all that makes a layout hard: short and wrapped ones, links, other scripts and
/// directions, emoji sequences, words and addresses without an end, tabs, breaks and blanks.
namespace ChatCorpus {

/// 220 rows; each text stands beside several nicks, and each nick beside several texts.
QList<ChatRow> rows();

/// The same without nick cells.
QList<ChatRow> rowsWithoutNicks();

/// `count` plain lines of a busy channel, numbered from `first` on, of which some are wrapped.
QList<ChatRow> plainRows(int count, int first = 0);

} // namespace ChatCorpus
