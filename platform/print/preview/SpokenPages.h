#pragma once

/// Lets a screen reader read the report's pages: each PageView is a document whose text is that of
/// the page on show, line by line, and says so when another page comes.
/// Call it before the first preview is read; further calls do nothing.
void installSpokenPages();
