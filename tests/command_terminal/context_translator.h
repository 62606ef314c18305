#pragma once

#include <QCoreApplication>
#include <QTranslator>

/// Translates every text to "[context]text" while it lives, so that a test sees which texts are translated, and in
/// whose context.
class ContextTranslator : public QTranslator
{
public:
    ContextTranslator() { QCoreApplication::installTranslator(this); }
    ~ContextTranslator() override { QCoreApplication::removeTranslator(this); }
    ContextTranslator(const ContextTranslator &) = delete;
    ContextTranslator &operator=(const ContextTranslator &) = delete;

    QString translate(const char *context, const char *sourceText, const char *disambiguation,
                      int number) const override
    {
        Q_UNUSED(disambiguation)
        Q_UNUSED(number)
        return QLatin1Char('[') + QString::fromUtf8(context) + QLatin1Char(']')
            + QString::fromUtf8(sourceText);
    }
    bool isEmpty() const override { return false; }
};
