import { catalogue, connect, type ChangeEvent, type Outcome, type SettingKey, type Values } from 'settings-client';

/** What a program in TypeScript makes of the package; compiled by a test, never run. */
export async function use(key: SettingKey): Promise<string | undefined> {
    const client = connect({
        name: 'consumer',
        address: 'http://127.0.0.1:8097/?key=secret',
        loaded: (values: Values) => values.deviceName,
        changed: ({ value, event }) => value ?? event?.client,
    });
    const outcome: Outcome = await client.set('captionsFontSize', 'FONT_LARGE');
    if (outcome.outcome === 'refused') {
        return outcome.reason === 'stale' ? outcome.message : catalogue[key].default;
    }
    await client.batch([
        { key: 'deviceName', to: 'Den' },
        { key: 'handsFreeEnabled', to: 'true' },
    ]);
    // @ts-expect-error: no setting has this key
    await client.set('devicename', 'Den');
    // @ts-expect-error: the setting has other choices
    await client.set('captionsFontSize', 'FONT_HUGE');
    // @ts-expect-error: a switch is true or false
    await client.batch([{ key: 'handsFreeEnabled', to: 'on' }]);
    const events: ChangeEvent[] | null = await client.history(20, 'deviceName');
    return events?.[0]?.from ?? (await client.read(['deviceName']))?.deviceName;
}
