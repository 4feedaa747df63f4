#pragma once
#include <memory>

#include "Library/ListTest.h"
#include "SongFiles/CSongFileWork.h"

/** A database, and who works on the files of its songs. */
class FileWorkTest : public ListTest {
protected:
    FileWorkTest() { i_filesP = std::make_unique<CSongFileWork>(*i_databaseP); }

    std::unique_ptr<CSongFileWork> i_filesP;   // goes before the database
};
