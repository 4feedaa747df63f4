#pragma once
#include <cstddef>
#include <string_view>

#include "Platform/CUserInterface.h"

/** What loading a library asks of the world above. Where nobody sits in front, each has its answer here.
    Threads  main.
    Owner    whoever loads; it outlives the store. */
class CLibraryHost {
public:
    virtual ~CLibraryHost() = default;
    /** For loads that nobody watches. */
    [[nodiscard]] static CLibraryHost& Nobody();

    /** The safe answer when nobody sits in front. */
    virtual Answer Ask(const Question& question) { return {question.safeIndex, question.checkedB}; }
    /** What the load does now, and how far it is. */
    virtual void ShowProgress(std::string_view /*words*/) {}
    virtual void ShowSteps(std::size_t /*doneL*/, std::size_t /*totalL*/) {}
    /** Songs that lists named and that are nowhere any more. */
    virtual void SongsLost(long /*countL*/) {}
    /** Why all of a library that is as its files have it is saved anew after its load; empty: it is not. */
    [[nodiscard]] virtual std::string_view WhySaveAnew() const { return {}; }
};
