# Headers that most sources include; parsing them takes most of the compile time. Set
# CMAKE_DISABLE_PRECOMPILE_HEADERS to build without them.
set(VELMORA_PRECOMPILED_HEADERS
    <algorithm> <functional> <memory> <optional> <utility> <vector>
    <QApplication> <QBoxLayout> <QComboBox> <QDialog> <QFile> <QLabel> <QLineEdit> <QListWidget>
    <QMainWindow> <QMenu> <QMessageBox> <QPainter> <QPointer> <QPushButton> <QRegularExpression>
    <QSettings> <QSplitter> <QStyle> <QTabWidget> <QTcpSocket> <QTextBlock> <QTextBrowser>
    <QTextTable> <QTimer> <QTreeWidget> <QVBoxLayout>)
