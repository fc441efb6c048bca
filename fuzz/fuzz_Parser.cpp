// Checks the signals of a session: every text in them is part of the received lines or one of the
// session's own texts.
//
// The input is lines that end with LF.

#include "Fuzzing.h"
#include "IRCConnection.h"
#include "IRCParser.h"

#include <QMetaMethod>
#include <QSignalSpy>

#include <memory>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

bool isOwnText(const QString &text)
{
    static const QStringList own{u"Connected and registered."_s, u"Server"_s,
                                 u"Socket is not connected"_s,
                                 u"All nicknames are in use. Please choose a different nick."_s};
    return own.contains(text);
}

/// Records all signals of a session.
class Spies final
{
public:
    explicit Spies(const IRCConnection &session)
    {
        const QMetaObject &type = IRCConnection::staticMetaObject;
        for (int index = type.methodOffset(); index < type.methodCount(); ++index) {
            if (type.method(index).methodType() == QMetaMethod::Signal)
                spies.push_back(std::make_unique<QSignalSpy>(&session, type.method(index)));
        }
    }

    /// Checks the texts of all recorded signals against `lines`, and clears the record.
    void check(const QString &lines)
    {
        for (const auto &spy : spies) {
            for (const QVariantList &arguments : std::as_const(*spy)) {
                for (const QVariant &argument : arguments) {
                    // Parsed from a text of the server.
                    if (argument.metaType() == QMetaType::fromType<int>())
                        continue;
                    const QStringList texts = argument.toStringList();
                    for (const QString &text : texts)
                        Fuzzing::require(lines.contains(text) || isOwnText(text),
                                         "signals carry parts of the lines");
                }
            }
            spy->clear();
        }
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> spies;
};

} // namespace

int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    Fuzzing::start();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString lines = QString::fromUtf8(Fuzzing::bytesOf(data, size));
    IRCConnection session;
    Spies spies(session);
    for (const QString &line : lines.split(u'\n'))
        IRCParser::parseLine(line, &session);
    spies.check(lines);
    return 0;
}
