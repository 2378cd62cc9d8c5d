// The shared library exports exactly what the header declares, and every
// name it exports belongs to the library's list of 308.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>

namespace {

std::set<std::string> words(std::istream& in) {
    std::set<std::string> out;
    for (std::string w; in >> w;) out.insert(w);
    return out;
}

// Defined dynamic symbols, as binutils reads them.
std::set<std::string> exported() {
    std::string text;
    if (FILE* p = popen("nm -D --defined-only --format=just-symbols " VQCJ_SHARED_LIB, "r")) {
        char buf[4096];
        for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) text.append(buf, n);
        pclose(p);
    }
    std::istringstream in(text);
    return words(in);
}

// Names starting vqci or vqcj followed by an opening parenthesis.
std::set<std::string> declared() {
    std::ifstream f(VQCJ_PUBLIC_HEADER);
    const std::string s((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    auto word = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    std::set<std::string> names;
    for (size_t i = s.find("vqc"); i != std::string::npos; i = s.find("vqc", i + 1)) {
        if ((i > 0 && word(s[i - 1])) || (s[i + 3] != 'i' && s[i + 3] != 'j')) continue;
        size_t e = i;
        while (word(s[e])) ++e;
        if (s.find_first_not_of(' ', e) == s.find('(', e)) names.insert(s.substr(i, e - i));
    }
    return names;
}

}  // namespace

TEST(Exports, SharedLibraryExportsExactlyTheDeclaredNames) {
    std::ifstream listFile(VQCJ_EXPORT_LIST);
    const auto listed = words(listFile), decl = declared(), exp = exported();
    EXPECT_EQ(listed.size(), 308u);
    ASSERT_FALSE(exp.empty()) << "could not read " << VQCJ_SHARED_LIB;
    for (const auto& name : exp) EXPECT_TRUE(listed.count(name) && decl.count(name)) << name << " exported";
    for (const auto& name : decl) EXPECT_TRUE(listed.count(name) && exp.count(name)) << name << " declared";
    std::cout << "[ exports  ] " << exp.size() << " of " << listed.size() << " exports exist\n";
}
