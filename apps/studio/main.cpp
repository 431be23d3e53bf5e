#include <QApplication>

#include <znframe.h>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    ZNFrame frame(QStringLiteral("StudioFrame"));
    frame.show();
    return app.exec();
}
