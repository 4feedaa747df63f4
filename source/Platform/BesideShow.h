#pragma once
#include <functional>

#include "Platform/CUserInterface.h"

/** Who wants the answer. A question that comes by itself must not take the keys from the user. */
enum class AskedFor : bool { kUser, kItself };

/** A user interface whose dialogs stand beside the show; the others answer at once.
    Threads  main. */
class CBesideShow {
public:
    using Answered = std::function<void(const Answer& answer)>;
    using Chosen = std::function<void(std::optional<std::filesystem::path> folder)>;

    virtual ~CBesideShow() = default;
    virtual void AskThen(const Question& question, Answered answered, AskedFor who) = 0;
    virtual void ChooseFolderThen(std::string_view prompt, Chosen chosen) = 0;
    virtual void AlertAndWait(std::string_view message, std::string_view detail) = 0;
};

/** Asks, and goes on: `answered` is called once, now or later, unless the windows go before. By then what was asked about
    may have changed or gone: callers keep ids. A question that stands already is not asked twice; the later one takes its
    safe answer. CUserInterface::Ask, which waits, is for the start and the quit, when no song plays. */
void AskThen(CUserInterface& ui, const Question& question, CBesideShow::Answered answered,
             AskedFor who = AskedFor::kUser);
/** The same for a folder. */
void ChooseFolderThen(CUserInterface& ui, std::string_view prompt, CBesideShow::Chosen chosen);
/** Tells before there is a window, or as the last word of the process: the user has read it when this returns. */
void AlertAndWait(CUserInterface& ui, std::string_view message, std::string_view detail);
