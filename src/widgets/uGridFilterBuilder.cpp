#include "uGridFilterBuilder.h"

#include "uGridColumns.h"
#include "uGridKeyColumn.h"
#include "uGridModel.h"
#include "uGridSource.h"
#include "uGridTexts.h"
#include "uGridView.h"

#include <QComboBox>
#include <QDate>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
constexpr int KindRole = Qt::UserRole + 1; // 1 group, 2 condition
constexpr int MaxListedValues = 500;

const std::vector<TGridFilterOperator>& operators()
{
    using Op = TGridFilterOperator;
    static const std::vector<Op> list{Op::Equal,    Op::NotEqual,       Op::Less,       Op::LessOrEqual,
                                      Op::Greater,  Op::GreaterOrEqual, Op::Between,    Op::NotBetween,
                                      Op::Contains, Op::NotContains,    Op::BeginsWith, Op::EndsWith,
                                      Op::IsBlank,  Op::IsNotBlank,     Op::InList,     Op::NotInList};
    return list;
}

bool textual(TGridFilterOperator op)
{
    return op == TGridFilterOperator::Contains || op == TGridFilterOperator::NotContains ||
           op == TGridFilterOperator::BeginsWith || op == TGridFilterOperator::EndsWith;
}
} // namespace

// One condition: field, operator, one or two values (a list for "any of"), and a remove button.
class TFilterConditionRow : public QWidget
{
public:
    TFilterConditionRow(TGridFilterBuilder* builder, QTreeWidgetItem* item)
        : QWidget(builder->m_tree), m_builder(builder), m_item(item), m_field(new QComboBox(this)),
          m_operator(new QComboBox(this)), m_value(new QComboBox(this)), m_and(new QLabel(this)),
          m_value2(new QComboBox(this)), m_remove(new QToolButton(this))
    {
        m_field->setObjectName(QStringLiteral("field"));
        m_operator->setObjectName(QStringLiteral("operator"));
        m_value->setObjectName(QStringLiteral("value"));
        m_value2->setObjectName(QStringLiteral("value2"));
        m_remove->setObjectName(QStringLiteral("remove"));
        for (QComboBox* box : {m_value, m_value2}) {
            box->setEditable(true);
            box->setInsertPolicy(QComboBox::NoInsert);
            box->setMinimumContentsLength(10);
            box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        }
        m_field->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        m_operator->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        m_field->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        m_operator->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(2, 2, 2, 2);
        layout->addWidget(m_field);
        layout->addWidget(m_operator);
        layout->addWidget(m_value, 1);
        layout->addWidget(m_and);
        layout->addWidget(m_value2, 1);
        layout->addWidget(m_remove);
        layout->addStretch(0);

        const TGridView* view = builder->m_view;
        QStringList seen;
        for (const TGridColumn* column : view->columns()->ordered()) {
            if (column->isPicture() || view->model()->sourceColumnOf(column) < 0 ||
                seen.contains(column->fieldName()))
                continue;
            seen.append(column->fieldName());
            m_field->addItem(view->model()->columnCaption(column), column->fieldName());
        }
        for (const TGridFilterOperator op : operators())
            m_operator->addItem(GridTexts().operatorName(op), int(op));
        m_remove->setText(QStringLiteral("\u2715"));
        m_remove->setToolTip(GridTexts().FilterRemove);
        m_remove->setAutoRaise(true);
        m_and->setText(GridTexts().GroupAnd);
        m_value->lineEdit()->setPlaceholderText(GridTexts().FilterValuePlaceholder);
        m_value2->lineEdit()->setPlaceholderText(GridTexts().FilterValuePlaceholder);

        connect(m_field, &QComboBox::currentIndexChanged, this, [this] {
            fillValues();
            m_builder->updateSentence();
        });
        connect(m_operator, &QComboBox::currentIndexChanged, this, [this] {
            updateEditors();
            m_builder->updateSentence();
        });
        connect(m_value, &QComboBox::currentTextChanged, this, [this] { m_builder->updateSentence(); });
        connect(m_value2, &QComboBox::currentTextChanged, this, [this] { m_builder->updateSentence(); });
        connect(m_remove, &QToolButton::clicked, this, [this] { m_builder->removeItem(m_item); });
        fillValues();
        updateEditors();
    }

    void setField(const QString& fieldName)
    {
        int index = m_field->findData(fieldName);
        if (index < 0 && !fieldName.isEmpty()) {
            // A field the view does not show: kept so that the filter stays as it was.
            m_field->addItem(fieldName, fieldName);
            index = m_field->count() - 1;
        }
        if (index >= 0)
            m_field->setCurrentIndex(index);
    }

    void setNode(const TGridFilterNode& node)
    {
        setField(node.FieldName);
        m_operator->setCurrentIndex(m_operator->findData(int(node.Operator)));
        updateEditors();
        if (TGridFilterNode::valueCount(node.Operator) < 0) {
            QStringList texts;
            for (const QVariant& v : node.Values)
                texts.append(valueText(v));
            m_value->setEditText(texts.join(QStringLiteral("; ")));
        } else {
            m_value->setEditText(node.Values.isEmpty() ? QString() : valueText(node.Values.value(0)));
            m_value2->setEditText(node.Values.size() < 2 ? QString() : valueText(node.Values.value(1)));
        }
    }

    TGridFilterNode node(QString* problem) const
    {
        const auto op = TGridFilterOperator(m_operator->currentData().toInt());
        const QString field = m_field->currentData().toString();
        QVariantList values;
        const int count = TGridFilterNode::valueCount(op);
        if (count < 0) {
            for (const QString& part : m_value->currentText().split(u';', Qt::SkipEmptyParts))
                values.append(parse(m_value, part.trimmed(), op, problem));
        } else {
            if (count >= 1)
                values.append(parse(m_value, m_value->currentText().trimmed(), op, problem));
            if (count >= 2)
                values.append(parse(m_value2, m_value2->currentText().trimmed(), op, problem));
        }
        return TGridFilterNode::condition(field, op, values);
    }

private:
    TGridKeyColumn* keys() const
    {
        const QString field = m_field->currentData().toString();
        TGridSource* source = m_builder->m_view->source();
        return source->keys(source->columnOf(field));
    }

    QString valueText(const QVariant& value) const
    {
        if (value.isNull())
            return {};
        const TGridColumn* column = m_builder->m_view->columns()->byField(m_field->currentData().toString());
        if (column && column->formatter())
            return column->formatter()(value);
        if (value.metaType().id() == QMetaType::QDate)
            return QLocale().toString(value.toDate(), QLocale::ShortFormat);
        if (value.metaType().id() == QMetaType::Double)
            return QLocale().toString(value.toDouble(), 'g', QLocale::FloatingPointShortest);
        return value.toString();
    }

    void fillValues()
    {
        for (QComboBox* box : {m_value, m_value2}) {
            const QString text = box->currentText();
            const QSignalBlocker block(box);
            box->clear();
            if (TGridKeyColumn* k = keys())
                for (quint32 r = 1; r < k->rankCount() && r <= MaxListedValues; ++r) {
                    const QVariant v = k->value(r);
                    box->addItem(valueText(v), v);
                }
            box->setEditText(text);
        }
    }

    void updateEditors()
    {
        const auto op = TGridFilterOperator(m_operator->currentData().toInt());
        const int count = TGridFilterNode::valueCount(op);
        m_value->setVisible(count != 0);
        m_and->setVisible(count == 2);
        m_value2->setVisible(count == 2);
    }

    // The typed value of a text: one of the column's values by its text, else read as the
    // column's kind of value.
    QVariant parse(QComboBox* box, const QString& text, TGridFilterOperator op, QString* problem) const
    {
        if (text.isEmpty())
            return {};
        if (textual(op))
            return text;
        const int listed = box->findText(text, Qt::MatchFixedString);
        if (listed >= 0)
            return box->itemData(listed);
        TGridKeyColumn* k = keys();
        const int type = k ? k->numberType() : QMetaType::UnknownType;
        const QLocale locale;
        bool ok = false;
        QVariant value;
        switch (type) {
        case QMetaType::UnknownType:
            return text;
        case QMetaType::QDate: {
            QDate date = locale.toDate(text, QLocale::ShortFormat);
            if (!date.isValid())
                date = QDate::fromString(text, Qt::ISODate);
            ok = date.isValid();
            value = date;
            break;
        }
        case QMetaType::QDateTime: {
            QDateTime time = locale.toDateTime(text, QLocale::ShortFormat);
            if (!time.isValid())
                time = QDateTime::fromString(text, Qt::ISODate);
            ok = time.isValid();
            value = time;
            break;
        }
        case QMetaType::Bool: {
            const QString lower = text.toLower();
            ok = lower == QStringLiteral("true") || lower == QStringLiteral("false") ||
                 lower == QStringLiteral("1") || lower == QStringLiteral("0");
            value = lower == QStringLiteral("true") || lower == QStringLiteral("1");
            break;
        }
        default: {
            double d = locale.toDouble(text, &ok);
            if (!ok)
                d = text.toDouble(&ok);
            value = d;
            break;
        }
        }
        if (ok)
            return value;
        if (k && k->hasTexts())
            return text;
        if (problem && problem->isEmpty())
            *problem = GridTexts().FilterBadValue.arg(text, m_field->currentText());
        return {};
    }

    TGridFilterBuilder* m_builder;
    QTreeWidgetItem* m_item;
    QComboBox* m_field;
    QComboBox* m_operator;
    QComboBox* m_value;
    QLabel* m_and;
    QComboBox* m_value2;
    QToolButton* m_remove;
};

// One group: its operator and the buttons that add a condition or a group, or remove it.
class TFilterGroupRow : public QWidget
{
public:
    TFilterGroupRow(TGridFilterBuilder* builder, QTreeWidgetItem* item, bool root)
        : QWidget(builder->m_tree), m_operator(new QComboBox(this))
    {
        m_operator->setObjectName(QStringLiteral("groupOperator"));
        auto* addCondition = new QToolButton(this);
        auto* addGroup = new QToolButton(this);
        addCondition->setObjectName(QStringLiteral("addCondition"));
        addGroup->setObjectName(QStringLiteral("addGroup"));
        const TGridTexts& texts = GridTexts();
        for (const auto op : {TGridFilterGroupOperator::And, TGridFilterGroupOperator::Or,
                              TGridFilterGroupOperator::NotAnd, TGridFilterGroupOperator::NotOr})
            m_operator->addItem(texts.groupOperatorTitle(op), int(op));
        addCondition->setText(texts.FilterAddCondition);
        addGroup->setText(texts.FilterAddGroup);
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(2, 2, 2, 2);
        if (root)
            layout->addWidget(new QLabel(texts.FilterRoot, this));
        layout->addWidget(m_operator);
        layout->addWidget(addCondition);
        layout->addWidget(addGroup);
        if (!root) {
            auto* remove = new QToolButton(this);
            remove->setObjectName(QStringLiteral("remove"));
            remove->setText(QStringLiteral("\u2715"));
            remove->setToolTip(texts.FilterRemove);
            remove->setAutoRaise(true);
            layout->addWidget(remove);
            connect(remove, &QToolButton::clicked, this, [builder, item] { builder->removeItem(item); });
        }
        layout->addStretch(1);
        connect(m_operator, &QComboBox::currentIndexChanged, this, [builder] { builder->updateSentence(); });
        connect(addCondition, &QToolButton::clicked, this, [builder, item] { builder->addCondition(item); });
        connect(addGroup, &QToolButton::clicked, this, [builder, item] { builder->addGroup(item); });
    }

    TGridFilterGroupOperator groupOperator() const
    {
        return TGridFilterGroupOperator(m_operator->currentData().toInt());
    }
    void setGroupOperator(TGridFilterGroupOperator op)
    {
        m_operator->setCurrentIndex(m_operator->findData(int(op)));
    }

private:
    QComboBox* m_operator;
};

TGridFilterBuilder::TGridFilterBuilder(TGridView* view)
    : QDialog(view), m_view(view), m_tree(new QTreeWidget(this)), m_sentence(new QLabel(this)),
      m_problem(new QLabel(this))
{
    setObjectName(QStringLiteral("filterBuilder"));
    m_tree->setObjectName(QStringLiteral("filterTree"));
    m_tree->setHeaderHidden(true);
    m_tree->setColumnCount(1);
    m_tree->setRootIsDecorated(true);
    m_tree->setSelectionMode(QAbstractItemView::NoSelection);
    m_tree->setFocusPolicy(Qt::NoFocus);
    m_sentence->setObjectName(QStringLiteral("filterSentence"));
    m_sentence->setWordWrap(true);
    m_sentence->setTextFormat(Qt::PlainText);
    m_problem->setObjectName(QStringLiteral("filterProblem"));
    m_problem->setWordWrap(true);
    m_problem->hide();
    QPalette warning = m_problem->palette();
    warning.setColor(QPalette::WindowText, QColor(0xc0, 0x30, 0x30));
    m_problem->setPalette(warning);

    auto* buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply, this);
    buttons->button(QDialogButtonBox::Ok)->setText(GridTexts().FilterOk);
    buttons->button(QDialogButtonBox::Cancel)->setText(GridTexts().FilterCancel);
    buttons->button(QDialogButtonBox::Apply)->setText(GridTexts().FilterApply);
    buttons->button(QDialogButtonBox::Apply)->setObjectName(QStringLiteral("apply"));
    connect(buttons, &QDialogButtonBox::accepted, this, &TGridFilterBuilder::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &TGridFilterBuilder::reject);
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, [this] {
        const QString text = problem();
        m_problem->setText(text);
        m_problem->setVisible(!text.isEmpty());
        if (text.isEmpty())
            emit applied();
    });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tree, 1);
    layout->addWidget(m_sentence);
    layout->addWidget(m_problem);
    layout->addWidget(buttons);
    setWindowTitle(GridTexts().FilterBuilderCaption);
    resize(720, 420);
    setFilter({});
}

QTreeWidgetItem* TGridFilterBuilder::rootItem() const
{
    return m_tree->topLevelItem(0);
}

void TGridFilterBuilder::setFilter(const TGridFilter& filter)
{
    m_tree->clear();
    addNode(nullptr, filter.root());
    m_tree->expandAll();
    updateSentence();
}

QTreeWidgetItem* TGridFilterBuilder::addNode(QTreeWidgetItem* parent, const TGridFilterNode& node)
{
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_tree);
    if (node.IsGroup) {
        item->setData(0, KindRole, 1);
        auto* row = new TFilterGroupRow(this, item, parent == nullptr);
        m_tree->setItemWidget(item, 0, row);
        row->setGroupOperator(node.GroupOperator);
        for (const TGridFilterNode& child : node.Children)
            addNode(item, child);
    } else {
        item->setData(0, KindRole, 2);
        auto* row = new TFilterConditionRow(this, item);
        m_tree->setItemWidget(item, 0, row);
        row->setNode(node);
    }
    item->setExpanded(true);
    return item;
}

QTreeWidgetItem* TGridFilterBuilder::addCondition(QTreeWidgetItem* group, const QString& fieldName)
{
    if (!group)
        group = rootItem();
    auto* item = new QTreeWidgetItem(group);
    item->setData(0, KindRole, 2);
    auto* row = new TFilterConditionRow(this, item);
    m_tree->setItemWidget(item, 0, row);
    if (!fieldName.isEmpty())
        row->setField(fieldName);
    group->setExpanded(true);
    updateSentence();
    return item;
}

QTreeWidgetItem* TGridFilterBuilder::addGroup(QTreeWidgetItem* group)
{
    if (!group)
        group = rootItem();
    QTreeWidgetItem* item = addNode(group, TGridFilterNode::group(TGridFilterGroupOperator::Or));
    group->setExpanded(true);
    updateSentence();
    return item;
}

void TGridFilterBuilder::removeItem(QTreeWidgetItem* item)
{
    if (!item || item == rootItem())
        return;
    delete item;
    updateSentence();
}

TGridFilterNode TGridFilterBuilder::nodeOf(QTreeWidgetItem* item, QString* problem) const
{
    QWidget* widget = m_tree->itemWidget(item, 0);
    if (item->data(0, KindRole).toInt() == 2)
        return widget ? static_cast<TFilterConditionRow*>(widget)->node(problem) : TGridFilterNode();
    TGridFilterNode node = TGridFilterNode::group(
        widget ? static_cast<TFilterGroupRow*>(widget)->groupOperator() : TGridFilterGroupOperator::And);
    for (int i = 0; i < item->childCount(); ++i) {
        TGridFilterNode child = nodeOf(item->child(i), problem);
        if (!child.IsGroup && child.FieldName.isEmpty())
            continue;
        node.Children.push_back(std::move(child));
    }
    return node;
}

TGridFilter TGridFilterBuilder::filter() const
{
    if (!rootItem())
        return {};
    return TGridFilter(nodeOf(rootItem(), nullptr));
}

QString TGridFilterBuilder::problem() const
{
    QString text;
    if (rootItem())
        nodeOf(rootItem(), &text);
    return text;
}

void TGridFilterBuilder::updateSentence()
{
    if (!rootItem())
        return;
    const TGridFilter current = filter();
    const auto caption = [this](const QString& field) {
        const TGridColumn* column = m_view->columns()->byField(field);
        return column ? m_view->model()->columnCaption(column) : field;
    };
    const auto value = [this](const QString& field, const QVariant& v) {
        const TGridColumn* column = m_view->columns()->byField(field);
        if (v.isNull())
            return QString();
        return column && column->formatter() ? column->formatter()(v) : v.toString();
    };
    m_sentence->setText(current.isEmpty() ? QString() : current.displayText(caption, value));
}

void TGridFilterBuilder::accept()
{
    const QString text = problem();
    if (!text.isEmpty()) {
        m_problem->setText(text);
        m_problem->show();
        return;
    }
    QDialog::accept();
}

void TGridFilterBuilder::retranslate()
{
    setWindowTitle(GridTexts().FilterBuilderCaption);
}
