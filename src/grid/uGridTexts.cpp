#include "uGridTexts.h"

#include "uGridFilter.h"

namespace {
TGridTexts& current()
{
    static TGridTexts texts;
    return texts;
}
} // namespace

QString TGridTexts::operatorName(TGridFilterOperator op) const
{
    switch (op) {
    case TGridFilterOperator::Equal:
        return OpEqual;
    case TGridFilterOperator::NotEqual:
        return OpNotEqual;
    case TGridFilterOperator::Less:
        return OpLess;
    case TGridFilterOperator::LessOrEqual:
        return OpLessOrEqual;
    case TGridFilterOperator::Greater:
        return OpGreater;
    case TGridFilterOperator::GreaterOrEqual:
        return OpGreaterOrEqual;
    case TGridFilterOperator::Between:
        return OpBetween;
    case TGridFilterOperator::NotBetween:
        return OpNotBetween;
    case TGridFilterOperator::Contains:
        return OpContains;
    case TGridFilterOperator::NotContains:
        return OpNotContains;
    case TGridFilterOperator::BeginsWith:
        return OpBeginsWith;
    case TGridFilterOperator::EndsWith:
        return OpEndsWith;
    case TGridFilterOperator::IsBlank:
        return OpIsBlank;
    case TGridFilterOperator::IsNotBlank:
        return OpIsNotBlank;
    case TGridFilterOperator::InList:
        return OpInList;
    case TGridFilterOperator::NotInList:
        return OpNotInList;
    }
    return {};
}

QString TGridTexts::groupOperatorName(TGridFilterGroupOperator op) const
{
    switch (op) {
    case TGridFilterGroupOperator::And:
        return GroupAnd;
    case TGridFilterGroupOperator::Or:
        return GroupOr;
    case TGridFilterGroupOperator::NotAnd:
        return GroupNotAnd;
    case TGridFilterGroupOperator::NotOr:
        return GroupNotOr;
    }
    return {};
}

QString TGridTexts::groupOperatorTitle(TGridFilterGroupOperator op) const
{
    switch (op) {
    case TGridFilterGroupOperator::And:
        return GroupAndTitle;
    case TGridFilterGroupOperator::Or:
        return GroupOrTitle;
    case TGridFilterGroupOperator::NotAnd:
        return GroupNotAndTitle;
    case TGridFilterGroupOperator::NotOr:
        return GroupNotOrTitle;
    }
    return {};
}

const TGridTexts& GridTexts()
{
    return current();
}

void SetGridTexts(const TGridTexts& texts)
{
    current() = texts;
    emit TGridTextsNotifier::instance()->changed();
}

TGridTextsNotifier* TGridTextsNotifier::instance()
{
    static TGridTextsNotifier notifier;
    return &notifier;
}
