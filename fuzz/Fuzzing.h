#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

/// Called by libFuzzer for each input, and once before the first. Each fuzzer defines both.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace Fuzzing {

/// Creates the application, without a screen or a message bus and with an empty settings store of
/// its own. Discards Qt's warnings: hostile input causes thousands of them.
void start();

/// Aborts with `rule` as the message unless `condition` is true, so that libFuzzer reports the
/// input.
void require(bool condition, const char *rule);

QByteArray bytesOf(const std::uint8_t *data, std::size_t size);

} // namespace Fuzzing
