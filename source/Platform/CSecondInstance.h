#pragma once
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

/** One host a library root. The first start listens on a local socket in the runtime folder, named by a hash of the
    root; every later start hands it one text, its command line, and leaves.
    Whoever holds the lock of the file beside the socket is the first, so that of two starts in the same millisecond
    exactly one is, and a socket that a crash left behind is known to be dead.
    Another program of this user may ask something of the first one, too.
    Wire     u32 length, big-endian, then as many bytes of UTF-8; the answer is one byte, 1 for taken. A text that
             begins with the byte 1 is a question: behind the answer's byte comes another text of this form. Sockets
             are for this user alone (mode 0600), and the other end's user is asked for, too.
    Threads  Start, Listen, Ask and StopListening on one thread; `received` and `asked` are called on a thread of this object.
    Owner    the process, for its whole life. StopListening stands at the beginning of its end: a start from then on waits
             until this goes, and is the first then.
    Errors   errno values; a message that is too long, cut off or slow is dropped, and the listener goes on. */
class CSecondInstance {
public:
    using Received = std::function<void(std::string text)>;
    /** The answer to a question. It may take its time, kSend_Seconds at the most: meanwhile others wait. */
    using Asked = std::function<std::string(std::string_view question)>;
    enum class Role : unsigned char { kFirst, kSecond, kFailed };

    /** `folder` is made with mode 0700 when missing. `root` names the library root in use. */
    CSecondInstance(std::filesystem::path folder, const std::filesystem::path& root);
    ~CSecondInstance();
    CSecondInstance(const CSecondInstance&) = delete;
    CSecondInstance& operator=(const CSecondInstance&) = delete;

    /** Becomes the first instance, or sends `text` to the one that is. Waits at most `kSend_Seconds` for an answer, and
        `kLeaving_Seconds` for one that is on its way out.
        kFirst: the socket is there and messages queue up in it until Listen.
        kSecond: the text was taken. kFailed: neither; LastErrno says why (E2BIG for a text that is too long). */
    [[nodiscard]] Role Start(std::string_view text);
    /** After kFirst: from now on `received` is called for each text, `asked` for each question. */
    void Listen(Received received, Asked asked = {});
    /** In place of Start: puts a question to the first instance, if there is one. 0, or an errno: ENOENT when there is
        none, EBUSY when one has the lock that does not listen (yet, or any more). */
    [[nodiscard]] int Ask(std::string_view question, std::string& answer);
    /** Nothing is received any more; the lock stays. */
    void StopListening();

    [[nodiscard]] int LastErrno() const { return i_errnoL; }
    /** After kFailed: another has the lock, and this must not be a second first one. */
    [[nodiscard]] bool IsHeld() const { return i_heldB; }
    [[nodiscard]] std::filesystem::path SocketFile() const { return i_base.string() + ".socket"; }
    [[nodiscard]] std::filesystem::path LockFile() const { return i_base.string() + ".lock"; }

    static constexpr std::size_t kText_MaxBytes = 64 * 1024;
    static constexpr std::size_t kAnswer_MaxBytes = 16 * 1024 * 1024;
    static constexpr double kSend_Seconds = 5.0;
    static constexpr double kReceive_Seconds = 2.0;
    static constexpr double kLeaving_Seconds = 60.0;

private:
    class Handle {
    public:
        Handle() = default;
        explicit Handle(int number) : i_number(number) {}
        ~Handle() { Close(); }
        Handle(Handle&& other) noexcept : i_number(std::exchange(other.i_number, -1)) {}
        Handle& operator=(Handle&& other) noexcept;
        [[nodiscard]] int Number() const { return i_number; }
        explicit operator bool() const { return i_number >= 0; }
        void Close();

    private:
        int i_number = -1;
    };

    [[nodiscard]] int MakeFolder() const;
    /** EWOULDBLOCK: another holds the lock. */
    [[nodiscard]] int TakeLock();
    [[nodiscard]] int OpenSocket();
    /** `answerP` for the text behind the answer's byte; may be null. */
    [[nodiscard]] int Send(std::string_view text, double untilT, std::string* answerP = nullptr) const;
    [[nodiscard]] bool IsLocked() const;
    void Serve();
    /** True when the whole text of a connection came in time and its sender knows; a question was answered. */
    [[nodiscard]] bool Receive(int connection, std::string& text) const;

    std::filesystem::path i_folder;
    std::filesystem::path i_base;   // without extension
    int i_errnoL = 0;
    bool i_heldB = false;
    Handle i_lock, i_listener, i_folderHandle;
    Handle i_stopRead, i_stopWrite;   // a pipe; its end wakes the thread
    Received i_received;
    Asked i_asked;
    std::thread i_thread;
};
