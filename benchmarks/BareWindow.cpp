// What the toolkit alone costs: a window of the tool's size with a menu bar and a button. bare-window [WIDTH HEIGHT]
#include <QApplication>
#include <QMenuBar>
#include <QPushButton>
#include <QWidget>

namespace {

constexpr int MenuItems = 11;
constexpr int MenuHeight = 20;
constexpr QSize UsualSize(1274, 965);

}  // namespace

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    const QStringList words = QApplication::arguments();
    QWidget window;
    window.setFixedSize(words.size() == 3 ? QSize(words[1].toInt(), words[2].toInt()) : UsualSize);
    auto* bar = new QMenuBar(&window);
    bar->setNativeMenuBar(false);
    for (int item = 1; item <= MenuItems; ++item) {
        bar->addAction(QStringLiteral("Item %1").arg(item));
    }
    bar->setGeometry(0, 0, window.width(), MenuHeight);
    auto* button = new QPushButton(QStringLiteral("Button"), &window);
    button->setGeometry(window.width() - 174, window.height() - 125, 120, 75);
    window.show();
    return QApplication::exec();
}
