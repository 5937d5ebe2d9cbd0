#include "platform/linux/edit_line_reader.h"

#include <fcntl.h>
#include <histedit.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "base/text.h"

namespace nuvrel::platform {

struct EditLineReader::State {
    std::string prompt;
    EditLine* editor = nullptr;
    HistoryW* history = nullptr;
    // Written by interrupt(), watched beside the terminal.
    int wake[2] = {-1, -1};
};

namespace {

constexpr int historyLength = 500;

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::wstring wide(std::string_view utf8) {
    std::wstring out;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        const int length = byte < 0x80 ? 1 : byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
        char32_t c = length == 1 ? byte : byte & (0x3F >> (length - 1));
        for (int k = 1; k < length && i + k < utf8.size(); ++k)
            c = (c << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
        out += static_cast<wchar_t>(c);
        i += length;
    }
    return out;
}

char* promptOf(EditLine* editor) {
    void* data = nullptr;
    el_get(editor, EL_CLIENTDATA, &data);
    return const_cast<char*>(static_cast<EditLineReader::State*>(data)->prompt.c_str());
}

// One character of the terminal, decoded from UTF-8 here rather than by the locale, and
// abandoned with end of input when interrupt() writes to the wake pipe.
int readCharacter(EditLine* editor, wchar_t* out) {
    void* data = nullptr;
    el_get(editor, EL_CLIENTDATA, &data);
    const auto* state = static_cast<EditLineReader::State*>(data);
    char32_t c = 0;
    int expected = 0;
    while (true) {
        pollfd fds[2] = {{STDIN_FILENO, POLLIN, 0}, {state->wake[0], POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (fds[1].revents) return 0;
        unsigned char byte = 0;
        const ssize_t got = ::read(STDIN_FILENO, &byte, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0 ? 0 : -1;
        if (expected == 0) {
            expected = byte < 0x80 ? 0 : byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : 1;
            c = expected == 0 ? byte : byte & (0x3F >> expected);
        } else {
            c = (c << 6) | (byte & 0x3F);
            --expected;
        }
        if (expected == 0) {
            *out = static_cast<wchar_t>(c);
            return 1;
        }
    }
}

void release(EditLineReader::State* state) {
    if (state->editor) el_end(state->editor);
    if (state->history) history_wend(state->history);
    for (int fd : state->wake) {
        if (fd >= 0) ::close(fd);
    }
    delete state;
}

}  // namespace

EditLineReader::EditLineReader(std::string prompt, const std::vector<std::string>& history)
    : state_(new State{std::move(prompt)}) {
    // libedit measures and draws wide characters through the locale's character type.
    if (!std::setlocale(LC_CTYPE, "") || MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
    if (::pipe2(state_->wake, O_CLOEXEC) == 0) {
        state_->editor = el_init("nuvrel", stdin, stdout, stderr);
        state_->history = history_winit();
    }
    if (!state_->editor || !state_->history) {
        release(state_);
        throw std::runtime_error("libedit could not start");
    }
    HistEventW event;
    history_w(state_->history, &event, H_SETSIZE, historyLength);
    for (const auto& line : history)
        history_w(state_->history, &event, H_ENTER, wide(line).c_str());
    el_set(state_->editor, EL_CLIENTDATA, state_);
    el_set(state_->editor, EL_PROMPT, promptOf);
    el_set(state_->editor, EL_EDITOR, "emacs");
    el_wset(state_->editor, EL_HIST, history_w, state_->history);
    el_set(state_->editor, EL_GETCFN, readCharacter);
    el_set(state_->editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_source(state_->editor, nullptr);
}

EditLineReader::~EditLineReader() {
    release(state_);
}

std::optional<std::string> EditLineReader::readLine() {
    int count = 0;
    reading_ = true;
    const wchar_t* line = el_wgets(state_->editor, &count);
    reading_ = false;
    if (!line || count <= 0) return std::nullopt;
    std::string text;
    for (int i = 0; i < count; ++i) appendUtf8(text, static_cast<char32_t>(line[i]));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    if (!base::text::trim(text).empty()) {
        HistEventW event;
        history_w(state_->history, &event, H_ENTER, wide(text).c_str());
    }
    return text;
}

void EditLineReader::interrupt() {
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(state_->wake[1], &byte, 1);
}

}  // namespace nuvrel::platform
