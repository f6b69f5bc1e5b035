#pragma once

#include "modifierscontainer.h"
#include "registry.h"
#include "user.h"

#include <QSharedPointer>

class AbstractDocument;

/// The till's session: who is signed in, the shift, the document in progress
/// and the modifiers entered for the next position.
class Session
{
public:
    Session();

    QSharedPointer<User> getCurrentUser() const { return m_user; }
    void setCurrentUser(const QSharedPointer<User> &user) { m_user = user; }

    Registry &getRegistry() { return m_registry; }
    const Registry &getRegistry() const { return m_registry; }

    /// The number of the current shift.
    int getCurrentShift() const { return m_shift; }
    void setCurrentShift(int shift) { m_shift = shift; }

    QSharedPointer<AbstractDocument> getCurrentDocument() const { return m_document; }
    void setCurrentDocument(const QSharedPointer<AbstractDocument> &document) { m_document = document; }

    ModifiersContainer &getModifiers() { return m_modifiers; }

    /// The cash in the drawer, as the host counts it.
    double getDrawerAmount() const { return m_drawerAmount; }
    void setDrawerAmount(double amount) { m_drawerAmount = amount; }

private:
    QSharedPointer<User> m_user;
    Registry m_registry;
    int m_shift = 1;
    QSharedPointer<AbstractDocument> m_document;
    ModifiersContainer m_modifiers;
    double m_drawerAmount = 0.0;
};
