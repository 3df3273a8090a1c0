#include "sentence.h"

#include <QzSentence.h>
#include <dlfcn.h>

#include <iostream>

void say(const std::string& sentence) {
    std::cerr << sentence << std::endl;
    void* const listener = dlsym(RTLD_DEFAULT, qzSentenceName);
    if (listener) {
        reinterpret_cast<QzSentenceFunction*>(listener)(sentence.c_str());
    }
}
