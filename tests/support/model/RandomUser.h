#pragma once

#include "ModalAnswers.h"
#include "RandomLines.h"
#include "SessionModel.h"
#include "WindowSession.h"

#include <QStringList>

class ConnectDialog;
class QMenu;

/// Does random actions of the user, of the server and of the connection on a window, does the same
/// on a model of the window, and compares the two.
///
/// It answers every dialog and menu, sometimes after lines have arrived or the connection was lost
/// in the meantime. The session and the random source must outlive the object; nothing else may use
/// the session.
class RandomUser final
{
    Q_DISABLE_COPY_MOVE(RandomUser)

public:
    struct Counts
    {
        int linesSent = 0;
        int answers = 0; ///< Dialogs and menus that were answered.
        int linksLost = 0;
    };

    /// Mixes the lines of `recording` into the random server lines.
    RandomUser(WindowSession &windowSession, RandomSource &source, const QStringList &recording);

    /// Does one action and waits until it has been handled. Returns a description of the first
    /// failure; empty if there is none.
    [[nodiscard]] QString step();
    [[nodiscard]] QString recentSteps() const;
    [[nodiscard]] Counts counts() const { return done; }

private:
    struct Action
    {
        int weight = 0;
        const char *name = nullptr;
        void (RandomUser::*act)() = nullptr;
    };
    /// The answer to the dialog or menu of an action.
    struct Answer
    {
        bool hasDialog = false; ///< A dialog was opened.
        bool isAccepted = false;
        QString text;
        QString entry; ///< The menu entry that was chosen.
    };

    [[nodiscard]] static const QList<Action> &actions();
    [[nodiscard]] QString check();
    [[nodiscard]] bool isConnected() const;

    // The server and the connection
    void receiveLines();
    void reconnect();
    void loseLink();
    void disconnectByMenu();

    // Tabs
    void switchTab();
    void clickCloseButton();
    void requestCloseTab();
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

    void applyAwayToModel();
    void applyNickToModel();
    void answer(QWidget *shown);
    void answerMenu(QMenu *menu);
    void answerDialog(QDialog *dialog);
    void interrupt();
    [[nodiscard]] int randomTab();

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
