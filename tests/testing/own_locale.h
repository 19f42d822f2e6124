// Locales of the test's own, whatever the machine has: compiled into the test's folder.
#ifndef QUILLONID_TESTS_TESTING_OWN_LOCALE_H
#define QUILLONID_TESTS_TESTING_OWN_LOCALE_H

#include <string>

// Makes a locale, such as "tr_TR", with a character set known to setlocale() as
// "<source>.<charset>". False when that cannot be set; the locale in use stays.
bool MakeOwnLocale(const std::string& source, const std::string& charset);

#endif
