#include "model/AppModel.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QFileInfo>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("PDF Brelvonic"));
    QApplication::setOrganizationName(QStringLiteral("Brelvonic"));

    AppModel& model = AppModel::shared();
    MainWindow window(model);
    window.show();
    model.start();

    QStringList files;
    for (const QString& argument : app.arguments().mid(1))
        files << QFileInfo(argument).absoluteFilePath();
    if (!files.isEmpty())
        model.replacePlaylist(files);
    return app.exec();
}
