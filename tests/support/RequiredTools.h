#pragma once

#include <QStringList>
#include <QTest>

/// Returns the programs that are not installed.
[[nodiscard]] QStringList missingTools(const QStringList &programs);

/// Returns true if a missing program must fail a test, not skip it: `CI` or `VELMORA_REQUIRE_TOOLS`
/// is in the environment.
[[nodiscard]] bool areToolsRequired();

/// Ends a test function if the list `missing` has entries: skips it, or fails it if tools are
/// required. In `initTestCase` this applies to the whole program.
#define SKIP_IF_MISSING(missing)                                                                   \
    do {                                                                                           \
        const QStringList missingParts = (missing);                                                \
        if (!missingParts.isEmpty()) {                                                             \
            const QByteArray reason = "not installed: " + missingParts.join(u' ').toUtf8();        \
            if (areToolsRequired())                                                                \
                QFAIL(reason.constData());                                                         \
            QSKIP(reason.constData());                                                             \
        }                                                                                          \
    } while (false)

/// Like `SKIP_IF_MISSING` for the names of programs.
#define REQUIRE_TOOLS(...) SKIP_IF_MISSING(missingTools({__VA_ARGS__}))
