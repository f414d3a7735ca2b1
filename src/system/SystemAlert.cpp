#include "system/SystemAlert.h"
#include <QMessageBox>
#include <QPushButton>

namespace orlo {

void SystemAlert::inform(const QString& title, const QString& message)
{
    QMessageBox box(QMessageBox::Information, title, message, QMessageBox::Ok);
    box.exec();
}

bool SystemAlert::ask(const QString& title, const QString& message, const QString& accept, const QString& cancel)
{
    QMessageBox box(QMessageBox::Information, title, message);
    QPushButton* first = box.addButton(accept, QMessageBox::AcceptRole);
    box.addButton(cancel, QMessageBox::RejectRole);
    box.setDefaultButton(first);
    box.exec();
    return box.clickedButton() == first;
}

}  // namespace orlo
