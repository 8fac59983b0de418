#include <algorithm>
#include <deque>
#include <fstream>
// clang-format off
#include <windows.h>
#include <commctrl.h>
#include <commdlg.h>
// clang-format on

#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"
#include "host/viewer/log_receiver.h"
#include "host/viewer/routine_filter.h"
#include "host/viewer/window.h"

namespace ovno2::host {

namespace {

constexpr const wchar_t* title = L"Log viewer";
constexpr UINT_PTR refreshTimer = 1;
constexpr UINT refreshEvery = 100;  // milliseconds
constexpr int barHeight = 28;       // pixels; the field for the routine
constexpr int labelWidth = 190;
constexpr int fieldWidth = 260;
constexpr int maximumColumn = 32000;          // pixels, what a list takes
constexpr std::size_t mostLines = 1'000'000;  // the oldest quarter goes when there are more

enum Control : int { routineField = 1, lineList };
enum Item : UINT { saveItem = 100, clearItem, exitItem, followItem, levelItem };
constexpr UINT lastLevelItem = levelItem + 15;

const wchar_t* wide(const Text& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

HMENU makeMenu(std::optional<Long> level) {
    const HMENU file = CreatePopupMenu(), view = CreatePopupMenu(), levels = CreatePopupMenu(),
                bar = CreateMenu();
    AppendMenuW(file, MF_STRING, saveItem, L"&Save as...");
    AppendMenuW(file, MF_STRING, clearItem, L"&Clear");
    AppendMenuW(file, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(file, MF_STRING, exitItem, L"E&xit");
    AppendMenuW(view, MF_STRING | MF_CHECKED, followItem, L"&Follow new lines");
    for (UINT i = levelItem; i <= lastLevelItem; ++i) {
        std::wstring name = std::to_wstring(i - levelItem);
        if (i == levelItem) name += L" (ordinary lines only)";
        AppendMenuW(levels, MF_STRING, i, name.c_str());
    }
    if (level)
        CheckMenuRadioItem(levels, levelItem, lastLevelItem, levelItem + static_cast<UINT>(*level),
                           MF_BYCOMMAND);
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(file), L"&Log");
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(view), L"&View");
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(levels), L"L&evel of programs that start now");
    return bar;
}

void appendLine(std::ofstream& file, TextView line) {
    file << toUtf8(line) << "\r\n";
}

// A field for the routine above the list of lines. Lines are only kept when they arrive, since their sender
// waits; a timer shows them.
class ViewerWindow {
  public:
    explicit ViewerWindow(const ViewerOptions& options)
        : filter_(fromUtf8(options.routine)), receiver_([this](TextView line) { add(line); }) {
        WNDCLASSW type = {};
        type.lpfnWndProc = answer;
        type.hInstance = GetModuleHandleW(nullptr);
        type.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        type.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
        type.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        type.lpszClassName = L"ovviewer";
        RegisterClassW(&type);
        window_ =
            CreateWindowExW(0, type.lpszClassName, title, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                            900, 600, nullptr, makeMenu(options.level), type.hInstance, nullptr);
        if (!window_) return;
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        makeControls(fromUtf8(options.routine));
        arrange();
        ShowWindow(window_, SW_SHOWDEFAULT);
        SetTimer(window_, refreshTimer, refreshEvery, nullptr);
    }
    ~ViewerWindow() {
        if (!window_) return;
        SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
        DestroyWindow(window_);
    }
    ViewerWindow(const ViewerWindow&) = delete;
    ViewerWindow& operator=(const ViewerWindow&) = delete;

    Long number() const { return static_cast<Long>(reinterpret_cast<LONG_PTR>(window_)); }

    // Until the user ends it. `published` ends with the session of the user at the latest.
    bool run(const ViewerOptions& options, std::optional<PublishedViewer>& published, std::ofstream& saved) {
        published_ = &published;
        saved_ = options.saveFile.empty() ? nullptr : &saved;
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            if (IsDialogMessageW(window_, &message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        return !savingFailed_;
    }

  private:
    static LRESULT CALLBACK answer(HWND window, UINT message, WPARAM first, LPARAM second) {
        auto* self = reinterpret_cast<ViewerWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (!self) return DefWindowProcW(window, message, first, second);
        return self->take(message, first, second);
    }

    LRESULT take(UINT message, WPARAM first, LPARAM second) {
        switch (message) {
            case WM_SIZE:
                arrange();
                return 0;
            case WM_TIMER:
                refresh();
                return 0;
            case WM_COMMAND:
                command(LOWORD(first), HIWORD(first));
                return 0;
            case WM_NOTIFY:
                describe(*reinterpret_cast<NMHDR*>(second));
                return 0;
            case WM_ENDSESSION:
                if (first && published_) published_->reset();
                return 0;
            case WM_CLOSE:
                refresh();
                PostQuitMessage(0);
                return 0;
            default:
                if (message >= WM_USER)
                    return receiver_.receive(message, static_cast<std::uint32_t>(first),
                                             static_cast<std::uint32_t>(second));
                return DefWindowProcW(window_, message, first, second);
        }
    }

    HWND makeChild(const wchar_t* type, const wchar_t* text, DWORD style, int number) {
        return CreateWindowExW(0, type, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, window_,
                               reinterpret_cast<HMENU>(static_cast<INT_PTR>(number)), nullptr, nullptr);
    }
    void makeControls(const Text& routine) {
        label_ = makeChild(L"STATIC", L"Only while this routine is open:", SS_CENTERIMAGE, 0);
        field_ = makeChild(L"EDIT", wide(routine), WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL, routineField);
        list_ = makeChild(WC_LISTVIEWW, L"",
                          WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA | LVS_NOCOLUMNHEADER | LVS_SHOWSELALWAYS,
                          lineList);
        const auto font = reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT));
        SendMessageW(label_, WM_SETFONT, font, FALSE);
        SendMessageW(field_, WM_SETFONT, font, FALSE);
        SendMessageW(list_, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(ANSI_FIXED_FONT)), FALSE);
        LVCOLUMNW column = {};
        SendMessageW(list_, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    }
    void arrange() {
        RECT area;
        GetClientRect(window_, &area);
        const int gap = 4;
        MoveWindow(label_, gap, gap, labelWidth, barHeight - 2 * gap, TRUE);
        MoveWindow(field_, labelWidth + 2 * gap, gap, fieldWidth, barHeight - 2 * gap, TRUE);
        MoveWindow(list_, 0, barHeight, area.right, std::max<int>(area.bottom - barHeight, 0), TRUE);
    }

    void add(TextView line) {
        if (lines_.size() == mostLines) {
            lines_.erase(lines_.begin(), lines_.begin() + mostLines / 4);
            filterAnew();
        }
        lines_.emplace_back(line);
        if (!choose(lines_.size() - 1)) return;
        if (saved_) appendLine(*saved_, line);
    }
    bool choose(std::size_t position) {
        if (!filter_.shows(lines_[position])) return false;
        shown_.push_back(position);
        longest_ = std::max(longest_, lines_[position].size());
        changed_ = true;
        return true;
    }
    void filterAnew() {
        Text routine(static_cast<std::size_t>(GetWindowTextLengthW(field_)) + 1, u'\0');
        routine.resize(static_cast<std::size_t>(GetWindowTextW(
            field_, reinterpret_cast<wchar_t*>(routine.data()), static_cast<int>(routine.size()))));
        filter_ = RoutineFilter(routine);
        shown_.clear();
        longest_ = 0;
        changed_ = true;
        for (std::size_t i = 0; i < lines_.size(); ++i)
            choose(i);
    }

    void refresh() {
        if (saved_ && !saved_->flush()) {
            saved_ = nullptr;
            savingFailed_ = true;
            MessageBoxW(window_, L"The lines cannot be saved any more.", title, MB_ICONWARNING);
        }
        if (!changed_) return;
        changed_ = false;
        const Text widest(longest_ + 2, u'W');
        const auto width =
            SendMessageW(list_, LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(widest.c_str()));
        SendMessageW(list_, LVM_SETCOLUMNWIDTH, 0, std::min<LRESULT>(width, maximumColumn));
        SendMessageW(list_, LVM_SETITEMCOUNT, shown_.size(), LVSICF_NOSCROLL);
        if (follows_ && !shown_.empty()) SendMessageW(list_, LVM_ENSUREVISIBLE, shown_.size() - 1, FALSE);
    }
    // The list asks for the text of a line that it shows.
    void describe(const NMHDR& header) {
        if (header.hwndFrom != list_ || header.code != static_cast<UINT>(LVN_GETDISPINFOW)) return;
        LVITEMW& item = reinterpret_cast<NMLVDISPINFOW&>(const_cast<NMHDR&>(header)).item;
        const auto position = static_cast<std::size_t>(item.iItem);
        if ((item.mask & LVIF_TEXT) != 0 && position < shown_.size())
            lstrcpynW(item.pszText, wide(lines_[shown_[position]]), item.cchTextMax);
    }

    void command(UINT item, UINT event) {
        if (item == routineField) {
            if (event == EN_CHANGE && list_) filterAnew();
        } else if (item == saveItem) {
            saveAs();
        } else if (item == clearItem) {
            lines_.clear();
            filterAnew();
        } else if (item == exitItem) {
            SendMessageW(window_, WM_CLOSE, 0, 0);
        } else if (item == followItem) {
            follows_ = !follows_;
            CheckMenuItem(GetMenu(window_), followItem, follows_ ? MF_CHECKED : MF_UNCHECKED);
        } else if (item >= levelItem && item <= lastLevelItem && published_ && *published_) {
            (*published_)->setLevel(static_cast<Long>(item - levelItem));
            CheckMenuRadioItem(GetMenu(window_), levelItem, lastLevelItem, item, MF_BYCOMMAND);
        }
    }
    void saveAs() {
        wchar_t path[MAX_PATH] = L"ovNo2.log";
        OPENFILENAMEW choice = {};
        choice.lStructSize = sizeof choice;
        choice.hwndOwner = window_;
        choice.lpstrFilter = L"Logs (*.log)\0*.log\0All files\0*.*\0";
        choice.lpstrFile = path;
        choice.nMaxFile = MAX_PATH;
        choice.lpstrDefExt = L"log";
        choice.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST;
        if (!GetSaveFileNameW(&choice)) return;
        std::ofstream file(std::filesystem::path(path), std::ios::binary);
        for (const std::size_t position : shown_)
            appendLine(file, lines_[position]);
        file.close();
        if (!file) MessageBoxW(window_, L"The file cannot be written.", title, MB_ICONWARNING);
    }

    std::deque<Text> lines_;          // all that came
    std::vector<std::size_t> shown_;  // positions of those that the filter chooses
    std::size_t longest_ = 0;         // characters of a shown line
    RoutineFilter filter_;
    LogReceiver receiver_;
    HWND window_ = nullptr, label_ = nullptr, field_ = nullptr, list_ = nullptr;
    bool changed_ = false;
    bool follows_ = true;
    bool savingFailed_ = false;
    std::optional<PublishedViewer>* published_ = nullptr;
    std::ofstream* saved_ = nullptr;
};

}  // namespace

// A program without a console of its own may still have been given somewhere to write.
void say(const std::string& text, bool isError) {
    const HANDLE output = GetStdHandle(isError ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    const std::string line = text + (text.ends_with('\n') ? "" : "\n");
    DWORD written = 0;
    if (output && output != INVALID_HANDLE_VALUE &&
        WriteFile(output, line.data(), static_cast<DWORD>(line.size()), &written, nullptr))
        return;
    MessageBoxW(nullptr, wide(fromUtf8(text)), title, isError ? MB_ICONWARNING : MB_ICONINFORMATION);
}

int showLog(const ViewerOptions& options) {
    if (runningViewer() != 0) {
        say("A viewer of the log is running already.", /*isError=*/true);
        return failed;
    }
    std::ofstream saved;
    if (!options.saveFile.empty()) {
        saved.open(console::pathOf(options.saveFile), std::ios::binary | std::ios::app);
        if (!saved) {
            say(options.saveFile + ": the file cannot be written.", /*isError=*/true);
            return failed;
        }
    }
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);
    ViewerWindow window(options);
    if (window.number() == 0) {
        say("The window cannot be made.", /*isError=*/true);
        return failed;
    }
    std::optional<PublishedViewer> published;
    published.emplace(window.number(), options.mode, options.level);
    if (!published->isPublished()) {
        say("The registry does not take the viewer's values.", /*isError=*/true);
        return failed;
    }
    const bool complete = window.run(options, published, saved);
    published.reset();
    return complete ? done : failed;
}

}  // namespace ovno2::host
