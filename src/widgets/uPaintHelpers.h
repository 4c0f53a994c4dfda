#pragma once

#include <QStyle>

// The alignment that places text on the visual side for a layout direction, marked absolute so
// that a painter does not mirror it a second time.
inline Qt::Alignment VisualAlignment(Qt::LayoutDirection direction, Qt::Alignment alignment)
{
    return QStyle::visualAlignment(direction, alignment) | Qt::AlignAbsolute;
}

// A text without its mnemonic marks ("&Open" shows "Open", "&&" one "&").
inline QString WithoutMnemonic(const QString& text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'&') {
            if (i + 1 < text.size() && text[i + 1] == u'&')
                result += u'&';
            ++i;
            if (i < text.size() && text[i] != u'&')
                result += text[i];
            continue;
        }
        result += text[i];
    }
    return result;
}
