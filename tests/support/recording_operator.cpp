#include "tests/support/recording_operator.h"

namespace ampdesk {

namespace {

template <class T>
std::optional<T> take_first(std::deque<std::optional<T>>& prepared) {
    if (prepared.empty())
        return std::nullopt;
    auto first = prepared.front();
    prepared.pop_front();
    return first;
}

}  // namespace

Answer RecordingOperator::ask(const Message& message) {
    messages.push_back(message);
    if (on_ask)
        on_ask(message);
    if (!answers.empty()) {
        const Answer answer = answers.front();
        answers.pop_front();
        return answer;
    }
    const bool has_ok = message.buttons == Buttons::ok || message.buttons == Buttons::ok_cancel;
    return has_ok ? Answer::ok : Answer::yes;
}

std::optional<std::string> RecordingOperator::input_box(std::string_view prompt) {
    prompts.emplace_back(prompt);
    return take_first(inputs);
}

std::optional<std::string> RecordingOperator::choose_file_to_open(std::string_view title, std::string_view) {
    prompts.emplace_back(title);
    return take_first(choices);
}

std::optional<std::string> RecordingOperator::choose_file_to_save(std::string_view title, std::string_view,
                                                                  std::string_view, bool) {
    prompts.emplace_back(title);
    return take_first(choices);
}

std::vector<std::string> RecordingOperator::take_texts() {
    std::vector<std::string> texts;
    for (const Message& message : messages) texts.push_back(message.text);
    messages.clear();
    return texts;
}

}  // namespace ampdesk
