# The headers of Qt and of the standard library that most sources include: parsing them is most of the
# time of a compilation. CMAKE_DISABLE_PRECOMPILE_HEADERS builds without them.
set(VELMORA_PRECOMPILED_HEADERS
    <algorithm> <functional> <memory> <optional> <utility> <vector>
    <QApplication> <QBoxLayout> <QComboBox> <QDialog> <QFile> <QLabel> <QLineEdit> <QListWidget>
    <QMainWindow> <QMenu> <QMessageBox> <QPainter> <QPointer> <QPushButton> <QRegularExpression>
    <QSettings> <QSplitter> <QStyle> <QTabWidget> <QTcpSocket> <QTextBlock> <QTextBrowser>
    <QTextTable> <QTimer> <QTreeWidget> <QVBoxLayout>)
