#include "platform/mac/MacSettingsStorage.h"
#import <Foundation/Foundation.h>

// No Core Foundation object is created here; property lists are Objective-C objects.
namespace orlo::mac {

namespace {

QVariant fromPlist(id value)
{
    if ([value isKindOfClass:[NSNumber class]]) {
        NSNumber* number = value;
        // A Boolean is an NSNumber too: only the CFBoolean singletons are Booleans.
        if (CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID()) return bool(number.boolValue);
        if (CFNumberIsFloatType((__bridge CFNumberRef)number)) return number.doubleValue;
        return qint64(number.longLongValue);
    }
    if ([value isKindOfClass:[NSString class]]) return QString::fromNSString(value);
    if ([value isKindOfClass:[NSData class]]) return QByteArray::fromNSData(value);
    if ([value isKindOfClass:[NSArray class]]) {
        QVariantList list;
        for (id item in (NSArray*)value) list << fromPlist(item);
        return list;
    }
    if ([value isKindOfClass:[NSDictionary class]]) {
        QVariantMap map;
        NSDictionary* dictionary = value;
        for (id key in dictionary)
            if ([key isKindOfClass:[NSString class]]) map.insert(QString::fromNSString(key), fromPlist(dictionary[key]));
        return map;
    }
    return {};  // dates and anything else Orlo never writes
}

id toPlist(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool: return value.toBool() ? @YES : @NO;
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt: return @(value.toLongLong());
    case QMetaType::ULongLong: return @(value.toULongLong());
    case QMetaType::Double: return @(value.toDouble());
    case QMetaType::QString: return value.toString().toNSString();
    case QMetaType::QByteArray: return value.toByteArray().toNSData();
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        NSMutableArray* array = [NSMutableArray array];
        for (const QVariant& item : value.toList())
            if (id converted = toPlist(item)) [array addObject:converted];
        return array;
    }
    case QMetaType::QVariantMap: {
        NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            if (id converted = toPlist(it.value())) dictionary[it.key().toNSString()] = converted;
        return dictionary;
    }
    default: return nil;  // not a property-list value: left out rather than stored wrongly
    }
}

}  // namespace

MacSettingsStorage::MacSettingsStorage(QString domain) : domain_(std::move(domain)) {}

SettingsStorage::Loaded MacSettingsStorage::load()
{
    Loaded loaded;
    NSDictionary* stored = [[NSUserDefaults standardUserDefaults] persistentDomainForName:domain_.toNSString()];
    for (id key in stored)
        if ([key isKindOfClass:[NSString class]]) loaded.values.insert(QString::fromNSString(key), fromPlist(stored[key]));
    return loaded;
}

bool MacSettingsStorage::save(const QVariantMap& values)
{
    NSDictionary* dictionary = toPlist(values);
    // The whole domain at once, as the store hands it over; the defaults system writes it out.
    [[NSUserDefaults standardUserDefaults] setPersistentDomain:dictionary forName:domain_.toNSString()];
    return true;
}

}  // namespace orlo::mac
