// The demo: a small IRC server with two people who talk, and the program connected to it. Without
// arguments it shows the program on the display of the person who started it. With --screenshots
// it drives the program on a screen in memory, looks at what comes of it, and ends by itself.

#include "AttendedDemo.h"
#include "UnattendedDemo.h"

#include <QCommandLineParser>
#include <QCoreApplication>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption screenshots(
            u"screenshots"_s, u"Run on a screen in memory and leave pictures in this folder."_s,
            u"folder"_s);
    parser.addOption(screenshots);
    parser.process(application);

    if (parser.isSet(screenshots))
        return UnattendedDemo(parser.value(screenshots)).run();
    return AttendedDemo().run();
}
