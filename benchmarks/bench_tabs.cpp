// Measures opening a tab and switching tabs among many: in the program's window, without and with a
// background image, and in a plain QTabWidget with the same style sheet and close buttons.

#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "IRCParser.h"
#include "MainWindow.h"
#include "MyTabWidget.h"
#include "Report.h"
#include "TabStrip.h"
#include "TemporaryStore.h"
#include "ThemeManager.h"

#include <QApplication>
#include <QImage>
#include <QPushButton>
#include <QSettings>
#include <QStyleFactory>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTextBrowser>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int Rounds = 9;

// A fixed number of iterations, since blinking tabs always leave events to process.
void processEvents()
{
    for (int pass = 0; pass < 4; ++pass)
        QCoreApplication::processEvents();
}

class Tabs
{
    Q_DISABLE_COPY_MOVE(Tabs)

public:
    Tabs() = default;
    virtual ~Tabs() = default;

    // Opens another tab without making it current.
    virtual void open(const QString &name) = 0;
    virtual QTabWidget &widget() = 0;
};

class QtTabs final : public Tabs
{
public:
    QtTabs()
    {
        tabs.setStyleSheet(ThemeManager::tabWidgetStyleSheet(u"light"_s));
        MyTabWidget own;
        tabs.tabBar()->setStyleSheet(TabStrip::create(own)->styleSheet());
        tabs.resize(1000, 700);
        tabs.show();
    }

    void open(const QString &name) override
    {
        auto *view = new QTextBrowser;
        view->append(u"hello"_s);
        const int index = tabs.addTab(view, name);
        auto *button = new QPushButton(u"\u00D7"_s);
        button->setFixedSize(20, 20);
        button->setFlat(true);
        button->setStyleSheet(u"QPushButton { background: transparent; border: none; }"_s);
        tabs.tabBar()->setTabButton(index, QTabBar::LeftSide, button);
    }

    QTabWidget &widget() override { return tabs; }

private:
    QTabWidget tabs;
};

class ProgramTabs final : public Tabs
{
public:
    explicit ProgramTabs(const QString &image)
    {
        QSettings().setValue(u"chatBgImage"_s, image);
        window = std::make_unique<MainWindow>();
        window->resize(1000, 700);
        window->show();
    }

    // Opens it by a private message of an unknown user.
    void open(const QString &name) override
    {
        IRCParser::parseLine(u":%1!user@host.example PRIVMSG %1 :hello"_s.arg(name),
                             window->findChild<IRCConnection *>());
    }

    QTabWidget &widget() override { return *window->findChild<QTabWidget *>(); }

private:
    std::unique_ptr<MainWindow> window;
};

enum Kind { Plain, WithoutImage, WithImage, KindCount };

using Costs = std::array<double, KindCount>; // In milliseconds.
using AllTabs = std::array<Tabs *, KindCount>;

// Alternates between the kinds, so that other load affects all alike.
template <typename Work>
Costs medians(const AllTabs &all, const Work &work)
{
    std::array<std::vector<double>, KindCount> times;
    for (int round = 0; round < Rounds; ++round) {
        for (size_t kind = 0; kind < KindCount; ++kind) {
            const double start = Report::processorTime();
            work(*all.at(kind), round);
            processEvents();
            times.at(kind).push_back(Report::processorTime() - start);
        }
    }
    Costs costs{};
    for (size_t kind = 0; kind < KindCount; ++kind) {
        std::sort(times.at(kind).begin(), times.at(kind).end());
        costs.at(kind) = times.at(kind).at(Rounds / 2);
    }
    return costs;
}

void openNext(Tabs &tabs, int = 0)
{
    tabs.open(u"user%1"_s.arg(tabs.widget().count()));
}

void showNext(Tabs &tabs, int round)
{
    tabs.widget().setCurrentIndex(1 + round);
}

void print(const QString &work, const Costs &costs)
{
    Report::print({.work = work,
                   .unit = u"ms"_s,
                   .value = costs[WithoutImage],
                   .limit = costs[Plain] * 1.2,
                   .stock = costs[Plain]});
    Report::print({.work = work + u", background image"_s,
                   .unit = u"ms"_s,
                   .value = costs[WithImage],
                   .limit = std::min(costs[Plain], costs[WithoutImage]) * 1.2,
                   .stock = costs[Plain]});
}

void report(const QString &image)
{
    QtTabs plain;
    ProgramTabs withoutImage{QString()};
    ProgramTabs withImage{image};
    const AllTabs all{&plain, &withoutImage, &withImage};
    for (const int count : {50, 100, 200, 400}) {
        for (Tabs *tabs : all) {
            while (tabs->widget().count() < count - Rounds / 2)
                openNext(*tabs);
            processEvents();
        }
        print(u"a new tab beside %1 tabs"_s.arg(count), medians(all, openNext));
        // Not measured: Qt polishes a page when it is first shown.
        medians(all, showNext);
        print(u"a tab switch among %1 tabs"_s.arg(count), medians(all, showNext));
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const TemporaryStore store;
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"background.png"_s);
    QImage image(3840, 2160, QImage::Format_RGB32);
    image.fill(Qt::gray);
    if (!image.save(path))
        return EXIT_FAILURE;
    report(path);
    return EXIT_SUCCESS;
}
