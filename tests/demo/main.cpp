#include "Demo.h"

#include <QCommandLineParser>
#include <QCoreApplication>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
            u"A small IRC server with users who talk, and Velmora connected to it."_s);
    parser.addHelpOption();
    const QCommandLineOption screenshots(
            u"screenshots"_s, u"Run on a virtual screen and save screenshots in this folder."_s,
            u"folder"_s);
    parser.addOption(screenshots);
    parser.process(application);

    Demo::endOnSignals();
    return parser.isSet(screenshots) ? Demo::runUnattended(parser.value(screenshots))
                                     : Demo::runAttended();
}
