#include "platform/qt/qt_operator.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <algorithm>
#include <memory>
#include <utility>

#include "platform/qt/text.h"

namespace ampdesk {

namespace {

constexpr std::chrono::milliseconds k_sound_spacing{100};

QMessageBox::Icon box_icon(Icon icon) {
    switch (icon) {
        case Icon::exclamation:
            return QMessageBox::Warning;
        case Icon::question:
            return QMessageBox::Question;
        case Icon::information:
            return QMessageBox::Information;
        case Icon::none:
            break;
    }
    return QMessageBox::NoIcon;
}

struct ButtonSet {
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton closed;  // what closing the box without a button means
};

ButtonSet box_buttons(Buttons buttons) {
    switch (buttons) {
        case Buttons::ok_cancel:
            return {QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel};
        case Buttons::yes_no:
            return {QMessageBox::Yes | QMessageBox::No, QMessageBox::No};
        case Buttons::yes_no_cancel:
            return {QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Cancel};
        case Buttons::ok:
            break;
    }
    return {QMessageBox::Ok, QMessageBox::Ok};
}

Answer answer_of(QMessageBox::StandardButton button) {
    switch (button) {
        case QMessageBox::Cancel:
            return Answer::cancel;
        case QMessageBox::Yes:
            return Answer::yes;
        case QMessageBox::No:
            return Answer::no;
        default:
            return Answer::ok;
    }
}

QMessageBox* make_box(const Message& message, QWidget* parent) {
    const ButtonSet set = box_buttons(message.buttons);
    auto* box =
        new QMessageBox(box_icon(message.icon), from_utf8(message.title), QString(), set.buttons, parent);
    box->setTextFormat(Qt::PlainText);
    box->setText(from_utf8(message.text));
    box->setAccessibleDescription(from_utf8(message.text));
    if (!message.detail.empty()) {
        box->setInformativeText(from_utf8(message.detail));
        // The box leaves this label to guess the format; a "<" in a cause is no mark-up.
        if (auto* label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel")))
            label->setTextFormat(Qt::PlainText);
    }
    box->setEscapeButton(set.closed);
    return box;
}

QInputDialog* make_input(std::string_view prompt, QWidget* parent) {
    auto* dialog = new QInputDialog(parent);
    dialog->setWindowTitle(QStringLiteral("JEX Remote Control"));
    dialog->setInputMode(QInputDialog::TextInput);
    dialog->setLabelText(from_utf8(prompt));
    if (auto* field = dialog->findChild<QLineEdit*>())
        field->setAccessibleName(from_utf8(prompt));
    return dialog;
}

// Qt leaves the fields of its file dialog without the names that stand beside them.
void name_fields(const QFileDialog& dialog) {
    for (const auto& [label_name, field_name] : {std::pair{"lookInLabel", "lookInCombo"},
                                                 {"fileNameLabel", "fileNameEdit"},
                                                 {"fileTypeLabel", "fileTypeCombo"}}) {
        auto* label = dialog.findChild<QLabel*>(QLatin1String(label_name));
        auto* field = dialog.findChild<QWidget*>(QLatin1String(field_name));
        if (label != nullptr && field != nullptr)
            label->setBuddy(field);
    }
}

}  // namespace

QStringList name_filters(std::string_view filter) {
    const QStringList parts = from_utf8(filter).split(u'|');
    QStringList result;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QStringList patterns = parts[i + 1].split(u';', Qt::SkipEmptyParts);
        patterns.replaceInStrings(QStringLiteral("*.*"), QStringLiteral("*"));
        result << QStringLiteral("%1 (%2)").arg(parts[i], patterns.join(u' '));
    }
    return result;
}

QtOperator::QtOperator() : sound([] { QApplication::beep(); }) {
    show_timer_.setSingleShot(true);
    show_timer_.setInterval(0);
    QObject::connect(&show_timer_, &QTimer::timeout, &show_timer_, [this] { show_next(); });
    beep_timer_.setInterval(k_sound_spacing);
    QObject::connect(&beep_timer_, &QTimer::timeout, &beep_timer_, [this] {
        if (std::chrono::steady_clock::now() >= beep_end_)
            beep_timer_.stop();
        else
            sound();
    });
}

QtOperator::~QtOperator() {
    if (busy_ > 0 && qApp != nullptr)
        QApplication::restoreOverrideCursor();
}

void QtOperator::retire() {
    retired_ = true;
    waiting_.clear();
    if (standing_) {
        standing_->disconnect();
        standing_->close();
    }
}

QWidget* QtOperator::in_front() const {
    QWidget* modal = QApplication::activeModalWidget();
    return modal != nullptr ? modal : parent_.data();
}

void QtOperator::tell(const Message& message) {
    const auto like_it = [&](const Waiting& w) { return w.number == 0 && w.question.message == message; };
    const bool told =
        std::any_of(waiting_.begin(), waiting_.end(), like_it) || (standing_ && like_it(shown_));
    if (retired_ || told)
        return;
    waiting_.push_back({0, {.message = message}});
    show_soon();
}

void QtOperator::put_question(int number, const Question& question) {
    if (retired_)
        return;
    waiting_.push_back({number, question});
    show_soon();
}

void QtOperator::withdraw(int number) {
    std::erase_if(waiting_, [&](const Waiting& w) { return w.number == number; });
    if (!standing_ || shown_.number != number)
        return;
    standing_->disconnect();
    standing_->close();
    standing_ = nullptr;
    show_soon();
}

// From the event loop: whoever tells something is in the middle of his work.
void QtOperator::show_soon() {
    if (!show_timer_.isActive())
        show_timer_.start();
}

void QtOperator::show_next() {
    if (quiet() && on_quiet)
        on_quiet();
    if (standing_ || waiting_.empty() || retired_)
        return;
    const Waiting next = std::move(waiting_.front());
    waiting_.pop_front();
    switch (next.question.kind) {
        case Question::Kind::choice:
            return show_choice(next);
        case Question::Kind::text:
            return show_text(next);
        case Question::Kind::band:
            return show_band(next);
    }
}

void QtOperator::show_choice(const Waiting& waiting) {
    const Message& message = waiting.question.message;
    QMessageBox* box = make_box(message, in_front());
    stand(box, waiting, [box, closed = box_buttons(message.buttons).closed](int) -> Reply {
        auto* clicked = box->clickedButton();
        return {answer_of(clicked != nullptr ? box->standardButton(clicked) : closed)};
    });
}

void QtOperator::show_text(const Waiting& waiting) {
    QInputDialog* dialog = make_input(waiting.question.message.text, in_front());
    stand(dialog, waiting, [dialog](int result) -> Reply {
        const bool given = result == QDialog::Accepted;
        return {given ? Answer::ok : Answer::cancel, given ? dialog->textValue().toStdString() : ""};
    });
}

void QtOperator::show_band(const Waiting& waiting) {
    if (!make_band_dialog)
        return show_soon();
    const BandDialog band = make_band_dialog(in_front());
    stand(band.dialog, waiting, [of = band.band](int) -> Reply { return {Answer::ok, of()}; });
}

void QtOperator::stand(QDialog* dialog, const Waiting& waiting, std::function<Reply(int result)> reply) {
    standing_ = dialog;
    shown_ = waiting;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setModal(true);
    // It goes unanswered with the window that it stands in front of, and is shown again in front of the next.
    QObject::connect(dialog, &QObject::destroyed, &show_timer_, [this, waiting] {
        if (retired_)
            return;
        waiting_.push_front(waiting);
        show_soon();
    });
    QObject::connect(dialog, &QDialog::finished, &show_timer_,
                     [this, number = waiting.number, reply = std::move(reply)](int result) {
                         const Reply given = reply(result);
                         standing_->disconnect(&show_timer_);
                         standing_ = nullptr;
                         show_soon();
                         if (number != 0 && on_reply)
                             on_reply(number, given);
                     });
    dialog->show();
}

Answer QtOperator::ask(const Message& message) {
    const ButtonSet set = box_buttons(message.buttons);
    if (retired_)
        return answer_of(set.closed);
    const std::unique_ptr<QMessageBox> box(make_box(message, parent_));
    box->exec();
    auto* clicked = box->clickedButton();
    return answer_of(clicked != nullptr ? box->standardButton(clicked) : set.closed);
}

std::optional<std::string> QtOperator::choose_file(FileChoice choice, std::string_view title,
                                                   std::string_view filter, std::string_view suggestion) {
    if (retired_)
        return std::nullopt;
    QFileDialog dialog(parent_, from_utf8(title), QDir::currentPath());
    const bool save = choice != FileChoice::open;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, choice == FileChoice::save_without_question);
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::HideNameFilterDetails);  // ours: the text says what it is to say
    dialog.setNameFilters(name_filters(filter));
    name_fields(dialog);
    if (!suggestion.empty())
        dialog.selectFile(from_utf8(suggestion));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return QDir::toNativeSeparators(dialog.selectedFiles().constFirst()).toStdString();
}

std::optional<std::string> QtOperator::choose_file_to_open(std::string_view title, std::string_view filter) {
    return choose_file(FileChoice::open, title, filter, {});
}

std::optional<std::string> QtOperator::choose_file_to_save(std::string_view title, std::string_view filter,
                                                           std::string_view suggestion, bool ask_to_replace) {
    return choose_file(ask_to_replace ? FileChoice::save : FileChoice::save_without_question, title, filter,
                       suggestion);
}

void QtOperator::start_beep(std::chrono::milliseconds length) {
    beep_end_ = std::max(beep_end_, std::chrono::steady_clock::now() + length);
    if (beep_timer_.isActive())
        return;
    sound();
    beep_timer_.start();
}

void QtOperator::set_busy_pointer(bool busy) {
    busy_ += busy ? 1 : -1;
    if (busy && busy_ == 1)
        QApplication::setOverrideCursor(Qt::WaitCursor);
    if (!busy && busy_ == 0)
        QApplication::restoreOverrideCursor();
    busy_ = std::max(busy_, 0);
}

void QtOperator::show_status(std::string_view text) {
    if (on_status)
        on_status(from_utf8(text));
}

}  // namespace ampdesk
