import { render } from 'preact';
import { act } from 'preact/test-utils';
import { connect } from 'settings-client';
import { afterEach, beforeEach, describe, expect, it } from 'vitest';

import { FakeBrowser } from '../../../clients/javascript/src/fakeBrowser.fixture';
import { languageFor } from '../i18n/language';
import { Store } from '../state/store';
import { useStore } from '../state/useStore';
import { EditRow } from './EditRow';
import { Page } from './context';

const place = document.createElement('div');
let browser: FakeBrowser;
let store: Store;
let sequence: number;

function Rows() {
    const state = useStore(store);
    return (
        <Page.Provider value={{ store, state, language: languageFor('en'), goTo: () => undefined }}>
            <EditRow setting="deviceName" />
            <EditRow setting="companionDevice" parts={['Name', 'Kind']} />
        </Page.Provider>
    );
}

function event(key: string, to: string): void {
    sequence += 1;
    const payload = { settingDBId: key, from: '', to };
    void act(() => {
        browser.socket.receive({ type: 25, timestamp: 1, sequence, origin: 'socket', payload });
    });
}

function click(text: string): void {
    const button = [...place.querySelectorAll('button')].find(({ textContent }) => textContent.includes(text));
    void act(() => {
        button?.click();
    });
}

function type(text: string, field = 0): void {
    const input = place.querySelectorAll('input')[field];
    void act(() => {
        if (input !== undefined) {
            input.value = text;
            input.dispatchEvent(new Event('input', { bubbles: true }));
        }
    });
}

function submit(): void {
    void act(() => {
        place.querySelector('form')?.dispatchEvent(new Event('submit', { bubbles: true, cancelable: true }));
    });
}

function saved(): string[] {
    return browser.socket.sent
        .map((frame) => JSON.parse(frame) as { type: number; payload?: { to?: string } })
        .filter((frame) => frame.type === 24)
        .map((frame) => frame.payload?.to ?? '');
}

beforeEach(() => {
    browser = new FakeBrowser();
    sequence = 0;
    store = new Store((observer) => connect({ ...observer, address: 'http://tv/' }, browser));
    browser.socket.open();
    document.body.replaceChildren(place);
    void act(() => {
        render(<Rows />, place);
    });
    event('deviceName', 'TV');
    event('companionDevice', '["",""]');
});

afterEach(() => {
    render(null, place);
});

describe('an edit', () => {
    it('begins with the value and saves the typed text', () => {
        click('Device name');
        expect(place.querySelector('input')?.value).toBe('TV');
        expect(document.activeElement).toBe(place.querySelector('input'));
        type('Den');
        submit();
        expect(saved()).toEqual(['Den']);
        expect(place.querySelector('form')).toBeNull();
    });

    it('leaves the value unchanged when it is cancelled', () => {
        click('Device name');
        type('Den');
        click('Cancel');
        expect(saved()).toEqual([]);
        expect(place.textContent).toContain('TV');
        expect(document.activeElement?.textContent).toContain('Device name');
    });

    it('writes nothing when nothing was edited, whatever form the value has', () => {
        const values = ['["a","b","c"]', 'x', 'null', '["Phone"]', '[ "a", "b" ]', '[1,2]', '{}', ''];
        for (const value of values) {
            event('companionDevice', value);
            click('Companion device');
            submit();
            expect(place.querySelector('form'), value).toBeNull();
            expect(place.textContent, value).toContain('No change');
        }
        expect(saved()).toEqual([]);
    });

    it('of a pair changes one part and keeps the other; a value of another form is edited as one text', () => {
        const edited: [string, string[]][] = ['["Phone"]', '["a","b","c"]', 'null'].map((value) => {
            event('companionDevice', value);
            click('Companion device');
            const fields = [...place.querySelectorAll('input')].map((field) => field.value);
            type(`${fields[0] ?? ''}!`);
            submit();
            return [saved().at(-1) ?? '', fields];
        });
        expect(edited).toEqual([
            ['["Phone!",""]', ['Phone', '']],
            ['["a","b","c"]!', ['["a","b","c"]']],
            ['null!', ['null']],
        ]);
    });

    it('that leaves only blanks sets the default', () => {
        for (const [name, value, blank] of [
            ['Device name', 'Den', ''],
            ['Companion device', '["Phone","phone"]', ' \u3000'],
        ] as const) {
            event(name === 'Device name' ? 'deviceName' : 'companionDevice', value);
            click(name);
            place.querySelectorAll('input').forEach((_field, number) => {
                type(blank, number);
            });
            submit();
        }
        expect(saved()).toEqual(['TV', '["",""]']);
    });

    it('closes another one, whose text is kept and named until it is opened again', () => {
        click('Device name');
        type('Den');
        click('Companion device');
        expect(place.querySelectorAll('form').length).toBe(1);
        expect(place.querySelector('form')?.getAttribute('aria-label')).toBe('Change Companion device');
        expect(place.textContent).toContain('Not saved: Den');
        expect(document.activeElement).toBe(place.querySelector('input'));
        click('Device name');
        expect(place.querySelectorAll('form').length).toBe(1);
        expect(place.querySelector('input')?.value).toBe('Den');
        expect(place.textContent).not.toContain('Not saved');
        submit();
        expect(saved()).toEqual(['Den']);
        expect(document.activeElement?.textContent).toContain('Device name');
    });

    it('of a pair saves both parts', () => {
        click('Companion device');
        type('Phone', 0);
        type('phone', 1);
        submit();
        expect(saved()).toEqual(['["Phone","phone"]']);
    });

    it('is not overwritten, and does not overwrite, when the value changes meanwhile', () => {
        click('Device name');
        type('Den');
        event('deviceName', 'Attic');
        expect(place.querySelector('input')?.value).toBe('Den');
        expect(place.textContent).toContain('Changed to “Attic” in the meantime.');
        submit();
        expect(saved()).toEqual([]);
        expect(document.activeElement?.textContent).toBe('Keep my text');
        click('Keep my text');
        expect(place.textContent).not.toContain('in the meantime');
        submit();
        expect(saved()).toEqual(['Den']);
    });

    it('is found again after a look at another section, with what changed meanwhile, and leaves the focus alone', () => {
        const lookAway = () => {
            void act(() => {
                render(null, place);
            });
        };
        const lookBack = () => {
            void act(() => {
                render(<Rows />, place);
            });
        };
        click('Device name');
        lookAway();
        lookBack();
        expect(place.querySelector('form')).toBeNull();
        click('Device name');
        type('Den');
        lookAway();
        event('deviceName', 'Attic');
        lookBack();
        expect(place.querySelector('input')?.value).toBe('Den');
        expect(place.textContent).toContain('Changed to “Attic” in the meantime.');
        expect(document.activeElement).toBe(document.body);
        click('Cancel');
        lookAway();
        lookBack();
        expect(place.querySelector('form')).toBeNull();
    });

    it('can take the value that came meanwhile', () => {
        click('Device name');
        type('Den');
        event('deviceName', 'Attic');
        click('Use the new value');
        expect(place.querySelector('input')?.value).toBe('Attic');
        expect(saved()).toEqual([]);
    });
});
