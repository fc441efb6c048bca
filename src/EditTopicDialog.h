#pragma once

#include <QDialog>
#include <QString>

class QTextEdit;
class QToolBar;

/// The window in which an operator writes a channel's topic: plain text, into which a tool bar puts
/// the codes of IRC formatting.
///
/// It knows neither the session nor the channel's state: it shows the topic that it is given and
/// gives back what the user made of it. It is white in every theme. It lives for one `exec`, on the
/// stack of its caller.
class EditTopicDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EditTopicDialog)

public:
    /// `topic` is raw, with its control codes. `theme` names the looks of what isn't white.
    EditTopicDialog(const QString &channel, const QString &topic, const QString &theme,
                    QWidget *parent);

    /// The text as it stands, raw, without white space at its ends. It keeps the line breaks that
    /// the user has typed.
    [[nodiscard]] QString newTopic() const;

    /// Puts `code` around the selection, or at the cursor if nothing is selected. It never takes a
    /// code away.
    void insertIrcFormatting(const QString &code);

    /// Asks the user for a colour, in an event loop of its own, and gives the selection the nearest
    /// of the IRC colours: as background, under black or white letters, whichever is legible, or
    /// else as text colour. With nothing selected a text colour stays open at the cursor. Does
    /// nothing if the user chooses no colour.
    void chooseIrcColor(bool background);

    /// Opens a picker over the middle of the dialog and returns at once. A chosen emoji goes to the
    /// cursor.
    void openEmojiPicker();

    /// Puts on the sheet of the dialog's theme.
    void applyTheme();

private:
    void buildForm(const QString &topic);
    [[nodiscard]] QToolBar *buildToolBar();

    QTextEdit *topicEdit = nullptr;
    QString currentTheme;
};
