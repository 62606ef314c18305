#pragma once

#include "tests/orbclient/object_type_test.h"

/// What every method of every object type has to do; of the methods that are more than an item's, what they are called
/// and how they are called.
class ItemMethodsTest : public ObjectTypeTest
{
    Q_OBJECT

protected:
    using ObjectTypeTest::ObjectTypeTest;
    ~ItemMethodsTest() override;

private Q_SLOTS:
    void listsMethodsInOrder();
    void documentsMethod_data();
    void documentsMethod();
    void declaresHowMethodTakesArguments_data();
    void declaresHowMethodTakesArguments();

    void getterConvertsItsItem_data();
    void getterConvertsItsItem();
    void getterTellsOfFailedRead_data();
    void getterTellsOfFailedRead();
    void getterRefusesArguments_data();
    void getterRefusesArguments();

    void setterSendsText_data();
    void setterSendsText();
    void setterTellsOfRefusedWrite_data();
    void setterTellsOfRefusedWrite();
    void setterWantsExactlyOneArgument_data();
    void setterWantsExactlyOneArgument();

    void failsWithoutClient_data();
    void failsWithoutClient();
    void failsOnceClientIsGone_data();
    void failsOnceClientIsGone();
    void refusesForeignSelf_data();
    void refusesForeignSelf();
    void refusedSelfIsSystemErrorToScript_data();
    void refusedSelfIsSystemErrorToScript();

private:
    void addRows(bool (*wanted)(const ExpectedMethod &));
    /// Lets the item of the object under test be read as a text that was taken at 12.5 s.
    void setItemText(const char *item, const QString &text);
    PyMethodDef definition(const ExpectedMethod &method) const;
};
