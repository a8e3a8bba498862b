#include "terminal/ui/Form2.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ampdesk {

Form2::Form2(QWidget* parent) : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("Form2"));
    setWindowTitle(QStringLiteral("MSComm Terminal"));
    setAttribute(Qt::WA_ShowWithoutActivating);  // it takes no key that is meant for an amplifier
    auto* layout = new QVBoxLayout(this);
    state_ = new QLabel(this);
    state_->setObjectName(QStringLiteral("lblState"));
    state_->setTextFormat(Qt::PlainText);
    auto* button = new QPushButton(QStringLiteral("&Close"), this);
    button->setObjectName(QStringLiteral("Command1"));
    layout->addWidget(state_);
    layout->addWidget(button, 0, Qt::AlignCenter);
    connect(button, &QPushButton::clicked, this, &Form2::Command1_Click);
}

void Form2::show_on_top() {
    closing_ = false;
    showNormal();
    Form_Activate();
}

void Form2::set_state(const QString& text) {
    state_->setText(text);
}

void Form2::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() != QEvent::ActivationChange)
        return;
    // Its own question counts it as active with its parent.
    if (QApplication::activeWindow() == this)
        Form_Activate();
    else
        Form_Deactivate();
}

// The flag of its kind of window keeps it on top; raised, it is above the others of that kind.
void Form2::Form_Activate() {
    raise();
}

// Not at once: it may be hiding just now.
void Form2::Form_Deactivate() {
    const auto show_again = [this] {
        if (!closing_)
            showNormal();
    };
    QMetaObject::invokeMethod(this, show_again, Qt::QueuedConnection);
}

void Form2::Command1_Click() {
    closing_ = true;
    close();
}

// The window's own close box is the same as its button.
void Form2::closeEvent(QCloseEvent* event) {
    closing_ = true;
    event->accept();
}

}  // namespace ampdesk
