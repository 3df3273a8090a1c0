#include <QzSentence.h>

#include "run/announce/RuntimeFolder.h"

extern "C" QzSentenceFunction QzSentence;

void QzSentence(const char* sentence) {
    velmorak::announceMessage(sentence);
}
