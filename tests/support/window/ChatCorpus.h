#pragma once

#include "ChatTable.h"

/// Lines that are difficult to lay out: short and wrapped lines, links, other scripts and writing
/// directions, emoji sequences, very long words and addresses, tabs, line breaks and spaces.
namespace ChatCorpus {

/// Returns 220 rows. Each text occurs with several nicks, and each nick with several texts.
QList<ChatRow> rows();

/// Returns the same rows without nick cells.
QList<ChatRow> rowsWithoutNicks();

/// Returns `count` plain rows, numbered from `first`. Some of them wrap.
QList<ChatRow> plainRows(int count, int first = 0);

} // namespace ChatCorpus
