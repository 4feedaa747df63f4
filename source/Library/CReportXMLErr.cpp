#include "Library/CReportXMLErr.h"

#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Library/CSongDatabase.h"

void CReportXMLErr::Report(CSongDatabaseHost& host, const CFileRef& file, OSErr err) {
    Question question;
    question.title = "Error loading XML file:";
    question.text = "Error loading XML file: " + FaultText(err, file.GetPath());
    question.buttons = {"OK", "Reveal"};
    host.AskLater(question, [&host, file](const Answer& answer) {
        if (answer.buttonIndex == 1) host.Reveal(file);
    });
}
