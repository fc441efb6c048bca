#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

/// What libFuzzer calls for each input, and once before the first; each fuzzer defines both.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace Fuzzing {

/// Makes the process's application: no screen, no message bus, an empty settings store of its own,
/// and nothing of Qt's warnings, which hostile input calls forth by the thousand.
void start();

/// Ends the process as a failed input, with `rule` as the reason, unless `holds`.
void demand(bool holds, const char *rule);

QByteArray bytesOf(const std::uint8_t *data, std::size_t size);

} // namespace Fuzzing
