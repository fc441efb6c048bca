#pragma once

#include "ModalAnswers.h"
#include "RandomLines.h"
#include "SessionModel.h"
#include "WindowSession.h"

#include <QStringList>

class ConnectDialog;
class QMenu;

/// A user who does anything that can be done in the window, by chance, and the server and the link
/// with it; all of it is told to a model of the window, and compared.
///
/// The user answers every dialog and menu, sometimes only after lines have come in or the link has
/// gone meanwhile. The session and the random must outlive the user; nothing else may be done to
/// the session from then on.
class RandomUser final
{
    Q_DISABLE_COPY_MOVE(RandomUser)

public:
    struct Counts
    {
        int linesSent = 0;
        int answers = 0; ///< To dialogs and menus.
        int linksLost = 0;
    };

    /// Mixes the lines of `recording` into the server's.
    RandomUser(WindowSession &used, RandomSource &source, const QStringList &recording);

    /// Does one thing and waits until all is quiet. Returns what is not as it should be then, or an
    /// empty text.
    [[nodiscard]] QString step();
    /// What the latest steps were.
    [[nodiscard]] QString recentSteps() const;
    /// How much has happened.
    [[nodiscard]] Counts counts() const { return done; }

private:
    struct Action
    {
        int weight = 0;
        const char *name = nullptr;
        void (RandomUser::*act)() = nullptr;
    };
    /// What came up during an action, and how it was answered.
    struct Answer
    {
        bool cameUp = false; ///< A dialog, that is.
        bool isAccepted = false;
        QString text;
        QString entry; ///< Of a menu.
    };

    [[nodiscard]] static const QList<Action> &actions();
    [[nodiscard]] QString check();
    [[nodiscard]] bool isConnected() const;

    // The server and the link
    void hearLines();
    void connectAnew();
    void losesLink();
    void disconnects();

    // Tabs
    void switchTab();
    void clickCloseButton();
    void closeFromOutside();
    void pressCloseShortcut();
    void doubleClickTab();
    void openTabMenu();

    // People
    void openUserMenu();
    void doubleClickUser();
    void chooseInUserMenu(const QString &nick, const QString &channel);

    // Channel list
    void requestList();
    void filterList();
    void doubleClickListRow();
    void openListMenu();

    // Input
    void typeLine();
    void typeWithCompletion();
    void insertEmoji();
    [[nodiscard]] QString randomInput();

    // Dialogs
    void setAway();
    void changeNick();
    void joinChannel();
    void editTopic();
    void readInfo();
    void useConnectDialog();
    void usePreferences();

    // The window
    void resize();
    void dragSplitter();

    void followAway();
    void followNickChange();
    void answer(QWidget *shown);
    void answerMenu(QMenu *menu);
    void answerDialog(QDialog *dialog);
    void interrupt();
    [[nodiscard]] int someTab();

    WindowSession &session;
    const MainWindowProbe &probe;
    RandomSource &random;
    RandomLines lines;
    SessionModel model{session.probe.connection()};
    ModalAnswers answers;
    Answer latest;
    QStringList steps;
    Counts done;
    QString failure;
};
