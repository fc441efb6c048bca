#pragma once

#include <QDialog>
#include <QString>

class QTextEdit;
class QToolBar;

/// Lets an operator edit a channel's topic as plain text. A tool bar inserts IRC formatting codes.
///
/// Does not use the session. White in every theme. Created on the stack for one `exec`.
class EditTopicDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EditTopicDialog)

public:
    /// `topic` contains its control codes. `theme` applies to everything but the background.
    EditTopicDialog(const QString &channel, const QString &topic, const QString &theme,
                    QWidget *parent);

    /// Returns the edited topic with its control codes and typed line breaks, trimmed.
    [[nodiscard]] QString newTopic() const;

    /// Inserts `code` before and after the selection, or once at the cursor if nothing is selected.
    /// Never removes a code.
    void insertIrcFormatting(const QString &code);

    /// Asks for a colour in a nested event loop and applies the nearest IRC colour to the
    /// selection: as background with black or white text, whichever is legible, or as text colour.
    /// Without a selection a text colour is left open at the cursor. Does nothing if the user
    /// cancels.
    void chooseIrcColor(bool background);

    /// Opens an emoji picker over the middle of the dialog without blocking. A chosen emoji is
    /// inserted at the cursor.
    void openEmojiPicker();

    /// Applies the style sheet of the dialog's theme.
    void applyTheme();

private:
    void buildForm(const QString &topic);
    [[nodiscard]] QToolBar *buildToolBar();

    QTextEdit *topicEdit = nullptr;
    QString currentTheme;
};
