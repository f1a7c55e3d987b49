import { connect } from './settings-client.js';

const [status, form, result] = ['status', 'form', 'result'].map((id) => document.getElementById(id));
const field = form.elements.deviceName;

const client = connect({
    name: 'example page',
    status: (text) => (status.textContent = text),
    loaded: (values) => (field.value = values.deviceName),
    changed: ({ key, value, event }) => {
        if (key === 'deviceName') {
            field.value = value;
            result.textContent = event?.client ? `Changed by ${event.client}` : 'Changed';
        }
    },
});

form.addEventListener('submit', async (submission) => {
    submission.preventDefault();
    const { outcome, reason = '', value } = await client.set('deviceName', field.value);
    field.value = value ?? field.value;
    result.textContent = `${outcome} ${reason}`;
});
